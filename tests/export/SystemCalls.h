#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace quibel::test {

/// What happens to one system call in place of its work.
enum class Fate { fails, isInterrupted, doesHalf, endsTheProgram };

struct CallPlan {
  std::size_t call = 0;  ///< the one to go wrong, counted from 1; 0 for none
  Fate fate = Fate::fails;
  int error = 0;  ///< errno's value of a call that fails
};

/// While it lives, notes the system calls on the files of a folder, of all
/// threads, and has one of them go wrong. One at a time.
class SystemCalls {
 public:
  explicit SystemCalls(const std::filesystem::path& folder, CallPlan plan = {});
  SystemCalls(const SystemCalls&) = delete;
  SystemCalls& operator=(const SystemCalls&) = delete;
  ~SystemCalls();

  /// The calls so far: each one's name and its file's extension, as "pwrite .m4a".
  static std::vector<std::string> made();
};

}  // namespace quibel::test
