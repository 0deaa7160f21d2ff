#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/export/SystemCalls.h"
#include "tests/export/Workshop.h"

namespace quibel::test {
namespace {

using testing::Contains;
using testing::StartsWith;

// Makes 140,000 bytes: the temporary file is written in several pieces.
constexpr double seconds = 4.2;

std::vector<std::string> callsOfAnExport(Workshop& workshop) {
  const SystemCalls calls(workshop.folder());
  workshop.exportTo(workshop.file("tono.m4r"));
  return SystemCalls::made();
}

bool isSaved(const Workshop& workshop) {
  return workshop.model->status() == "Tono guardado: tono.m4r";
}

/// Whether the failure of the call of that number must be the export's. What was
/// only read may fail to close, and a temporary file to be removed.
bool mustEndIt(const std::vector<std::string>& calls, std::size_t number) {
  const auto copy = std::ranges::find(calls, "open .m4r") - calls.begin();
  const bool isOfTheCopy = std::cmp_greater(number, copy);
  const auto& call = calls[number - 1];
  return call != "close .wav" && call != "unlink .m4a" && !(call == "close .m4a" && isOfTheCopy);
}

struct EveryCall : testing::Test {
  EveryCall() {
    workshop.load(song);
    whole = ringtoneOf(workshop);
  }

  /// Exports with the plan; the call that it was for, or "" beyond the last one.
  std::string exportWith(const CallPlan& plan) {
    std::filesystem::remove(tone);
    return replaceWith(plan);
  }

  /// The same, over whatever has the ringtone's name.
  std::string replaceWith(const CallPlan& plan) {
    workshop.model->showAlertBinding().set(false);
    const SystemCalls calls(workshop.folder(), plan);
    workshop.exportTo(tone);
    const auto made = SystemCalls::made();
    return made.size() < plan.call ? "" : made[plan.call - 1];
  }

  Workshop workshop;
  std::filesystem::path song = workshop.writeSong(seconds);
  std::filesystem::path tone = workshop.file("tono.m4r");
  std::vector<std::uint8_t> songBytes = readBytes(song);
  std::vector<std::uint8_t> whole;
};

TEST_F(EveryCall, IsSeenByTheseTests) {
  const auto calls = callsOfAnExport(workshop);
  for (const char* call :
       {"open .wav", "pread .wav", "open .m4a", "pwrite .m4a", "close .m4a", "open .m4r",
        "read .m4a", "write .m4r", "fsync .m4r", "fstat .m4r", "close .m4r", "unlink .m4a"}) {
    EXPECT_THAT(calls, Contains(call));
  }
  EXPECT_GE(std::ranges::count(calls, "pwrite .m4a"), 4);
}

class EveryFailure : public EveryCall, public testing::WithParamInterface<int> {};

TEST_P(EveryFailure, IsReportedAndLeavesNoRingtone) {
  const auto calls = callsOfAnExport(workshop);
  for (std::size_t number = 1;; ++number) {
    const std::string call = exportWith({number, Fate::fails, GetParam()});
    if (call.empty()) break;
    SCOPED_TRACE(std::to_string(number) + ": " + call);
    if (mustEndIt(calls, number)) {
      EXPECT_FALSE(isSaved(workshop));
    }
    if (isSaved(workshop)) {
      EXPECT_TRUE(readBytes(tone) == whole);
    } else {
      EXPECT_THAT(workshop.alert(), testing::AnyOf(StartsWith("No se ha podido crear el tono. "),
                                                   StartsWith("No se ha podido guardar el tono. "),
                                                   "Este formato no se puede convertir a AAC."));
      EXPECT_FALSE(std::filesystem::exists(tone));
    }
    EXPECT_FALSE(workshop.model->isExporting());
    EXPECT_TRUE(readBytes(song) == songBytes);
    if (call != "unlink .m4a") {
      EXPECT_TRUE(Workshop::namesIn(workshop.temporary()).empty());
    }
    for (const auto& left : Workshop::namesIn(workshop.temporary()))
      std::filesystem::remove(workshop.temporary() / left);
  }
  EXPECT_TRUE(isSaved(workshop)) << "and without a failure all is well";
}

INSTANTIATE_TEST_SUITE_P(Errors, EveryFailure, testing::Values(EIO, ENOSPC),
                         [](const auto& parameter) {
                           return parameter.param == EIO ? "BrokenDisk" : "FullDisk";
                         });

TEST_P(EveryFailure, KeepsTheOldRingtoneOrTheNewOne) {
  const std::vector<std::uint8_t> old{1, 2, 3};
  for (std::size_t number = 1;; ++number) {
    std::filesystem::remove(tone);
    writeBytes(tone, old);
    const std::string call = replaceWith({number, Fate::fails, GetParam()});
    if (call.empty()) break;
    SCOPED_TRACE(std::to_string(number) + ": " + call);
    auto names = Workshop::namesIn(workshop.home());
    std::erase(names, "canción.wav");
    ASSERT_THAT(names, testing::SizeIs(1));
    const auto left = readBytes(workshop.file(names.front()));
    EXPECT_TRUE(left == (isSaved(workshop) || call == "renameat2 .m4r" ? whole : old));
    if (names.front() == "tono.m4r") continue;
    EXPECT_THAT(workshop.alert(), testing::HasSubstr("«" + names.front() + "»"));
    std::filesystem::remove(workshop.file(names.front()));
  }
  EXPECT_TRUE(isSaved(workshop)) << "and without a failure all is well";
  EXPECT_TRUE(readBytes(tone) == whole);
}

class EveryReadAndWrite : public EveryCall, public testing::WithParamInterface<Fate> {};

TEST_P(EveryReadAndWrite, IsContinued) {
  const auto calls = callsOfAnExport(workshop);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    if (!calls[i].contains("read") && !calls[i].contains("write")) continue;
    ASSERT_EQ(exportWith({i + 1, GetParam()}), calls[i]);
    EXPECT_TRUE(isSaved(workshop)) << i << ": " << calls[i] << ": " << workshop.alert();
    EXPECT_TRUE(readBytes(tone) == whole) << i << ": " << calls[i];
  }
}

INSTANTIATE_TEST_SUITE_P(That, EveryReadAndWrite,
                         testing::Values(Fate::doesHalf, Fate::isInterrupted),
                         [](const auto& parameter) {
                           return parameter.param == Fate::doesHalf ? "DoesHalf" : "IsInterrupted";
                         });

/// The program's sudden end before each of its calls: a process for each, made while this
/// one has no other thread.
struct SuddenEnd : testing::Test {
  void SetUp() override {
    const int unnamed = ::open(workshop.home().c_str(), O_WRONLY | O_TMPFILE, 0600);
    if (unnamed < 0) GTEST_SKIP() << "a file must have a name here from the beginning";
    ::close(unnamed);
    workshop.load(song);
  }

  /// Exports in a process that ends before its call of that number. False where it makes
  /// fewer: then the ringtone must be saved.
  bool exportEndsAt(std::size_t number) {
    const pid_t child = ::fork();
    EXPECT_GE(child, 0);
    if (child < 0) return false;
    if (child == 0) {
      const SystemCalls calls(workshop.folder(), {number, Fate::endsTheProgram});
      workshop.exportTo(tone);
      ::_exit(isSaved(workshop) ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status)) return true;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << number;
    EXPECT_GT(number, 20U);
    return false;
  }

  /// Nothing but temporary files may be left of it there.
  void removeTemporaryFiles() const {
    for (const auto& left : Workshop::namesIn(workshop.temporary())) {
      EXPECT_TRUE(left.ends_with(".m4a")) << left;
      std::filesystem::remove(workshop.temporary() / left);
    }
  }

  Workshop workshop;
  std::filesystem::path song = workshop.writeSong(seconds);
  std::filesystem::path tone = workshop.file("tono.m4r");
};

TEST_F(SuddenEnd, LeavesTheSongAndAtMostATemporaryFileOrTheWholeRingtone) {
  const auto songBytes = readBytes(song);
  std::vector<std::size_t> sizes;
  bool ended = true;
  for (std::size_t number = 1; ended; ++number) {
    ended = exportEndsAt(number);
    EXPECT_TRUE(readBytes(song) == songBytes) << number;
    if (std::filesystem::exists(tone)) sizes.push_back(std::filesystem::file_size(tone));
    std::filesystem::remove(tone);
    EXPECT_EQ(Workshop::namesIn(workshop.home()), std::vector<std::string>{"canción.wav"});
    removeTemporaryFiles();
  }
  // The last one was left alone: every ringtone there was is as long as its.
  ASSERT_FALSE(sizes.empty());
  EXPECT_THAT(sizes, testing::Each(sizes.back()));
}

TEST_F(SuddenEnd, LeavesTheOldRingtoneOrTheWholeNewOne) {
  const auto whole = ringtoneOf(workshop);
  const std::vector<std::uint8_t> old{1, 2, 3};
  bool ended = true;
  for (std::size_t number = 1; ended; ++number) {
    for (const auto& name : Workshop::namesIn(workshop.home())) {
      if (name.ends_with(".m4r")) std::filesystem::remove(workshop.file(name));
    }
    writeBytes(tone, old);
    ended = exportEndsAt(number);
    auto names = Workshop::namesIn(workshop.home());
    std::erase(names, "canción.wav");
    // Beside the old one the new one may be, and then it is whole.
    ASSERT_FALSE(names.empty()) << number;
    for (const auto& name : names) {
      const auto bytes = readBytes(workshop.file(name));
      EXPECT_TRUE(bytes == whole || (name == "tono.m4r" && bytes == old)) << number << ": " << name;
    }
    removeTemporaryFiles();
  }
  EXPECT_TRUE(readBytes(tone) == whole);
}

}  // namespace
}  // namespace quibel::test
