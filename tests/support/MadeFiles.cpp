#include "tests/support/MadeFiles.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string_view>

#include <unistd.h>

#include "tests/support/TestAudio.h"

namespace quibel::test {

namespace {

namespace fs = std::filesystem;

// When the program of that name was installed or built; 0 for what is none.
std::int64_t timeOfProgram(const std::string& name) {
  std::error_code error;
  std::istringstream folders(std::getenv("PATH"));
  for (std::string folder; std::getline(folders, folder, ':');) {
    const auto time = fs::last_write_time(fs::path(folder) / name, error);
    if (!error) return time.time_since_epoch().count();
  }
  return 0;
}

// What decides the bytes that a command makes: its words, the programs among them, and
// what it makes them of.
std::string recipe(const std::vector<std::string>& command, const fs::path& in) {
  std::ostringstream text;
  for (const std::string& argument : command) {
    text << argument << '\n';
    std::istringstream words(argument);
    for (std::string word; words >> word;) {
      std::erase(word, '\'');
      text << timeOfProgram(word) << ' ';
    }
  }
  const auto bytes = readBytes(in);
  text.write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
  return text.str();
}

}  // namespace

void runOn(const std::vector<std::string>& command, const fs::path& in, const fs::path& out) {
  std::vector<std::string> words = command;
  std::ranges::replace(words, std::string("{in}"), in.string());
  std::ranges::replace(words, std::string("{out}"), out.string());
  run(words);
}

void makeFile(const std::vector<std::string>& command, const fs::path& in, const fs::path& out) {
  const fs::path folder = QUIBEL_MADE_FILES;
  const auto key = std::to_string(std::hash<std::string>{}(recipe(command, in)));
  const auto kept = folder / (key + out.extension().string());
  constexpr auto overwrite = fs::copy_options::overwrite_existing;
  if (fs::exists(kept)) {
    fs::copy_file(kept, out, overwrite);
    return;
  }
  runOn(command, in, out);
  // Other processes may be making the same one.
  fs::create_directories(folder);
  const auto unfinished = folder / (key + "." + std::to_string(::getpid()));
  fs::copy_file(out, unfinished, overwrite);
  fs::rename(unfinished, kept);
}

}  // namespace quibel::test
