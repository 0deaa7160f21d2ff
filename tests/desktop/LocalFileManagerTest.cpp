#include <cerrno>
#include <csignal>
#include <cstring>
#include <random>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "desktop/LocalFileManager.h"
#include "tests/desktop/TemporaryFolder.h"

namespace quibel::desktop {
namespace {

using platform::FileURL;

struct LocalFiles : testing::Test {
  TemporaryFolder folder;
  LocalFileManager files;

  /// The description of a failure, or "" if there was none.
  static std::string failureOf(const platform::Result<void>& result) {
    return result ? "" : result.error().localizedDescription();
  }

  /// Mounts a file system of 64 KiB at a new folder, seen by this process only.
  /// False where the machine does not let us.
  bool mountSmallDisk(const std::filesystem::path& at) const {
    const int spaces = ::geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER;
    std::filesystem::create_directory(at);
    return ::unshare(spaces) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", at.c_str(), "tmpfs", 0, "size=64k") == 0;
  }
};

TEST_F(LocalFiles, ACopyIsTheFileByteForByte) {
  for (const std::size_t size : {0U, 1U, 4'095U, 262'144U, 262'145U, 3'000'001U}) {
    std::string contents(size, '\0');
    std::mt19937 random(1);
    for (auto& byte : contents) byte = static_cast<char>(random());
    const auto from = folder.write("from" + std::to_string(size), contents);
    const auto to = folder.url("to" + std::to_string(size));
    ASSERT_EQ(failureOf(files.copyItem(from, to)), "");
    EXPECT_TRUE(contentsOf(to) == contents) << size;
  }
}

TEST_F(LocalFiles, ACopysPermissionsFollowTheUmask) {
  const auto from = folder.write("from", "x");
  std::filesystem::permissions(from.path(), std::filesystem::perms::owner_all);
  const auto before = ::umask(027);
  const auto result = files.copyItem(from, folder.url("to"));
  ::umask(before);
  ASSERT_EQ(failureOf(result), "");
  struct stat status{};
  ASSERT_EQ(::stat(folder.url("to").path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(LocalFiles, ACopyNeverReplacesWhatIsThere) {
  const auto from = folder.write("from", "nuevo");
  const auto to = folder.write("to", "viejo");
  EXPECT_EQ(failureOf(files.copyItem(from, to)), "Ya existe un archivo con ese nombre.");
  EXPECT_EQ(contentsOf(to), "viejo");
}

TEST_F(LocalFiles, ACopyFollowsNoLinkAtItsDestination) {
  const auto from = folder.write("from", "nuevo");
  std::filesystem::create_symlink("elsewhere", folder.path() / "to");
  EXPECT_EQ(failureOf(files.copyItem(from, folder.url("to"))),
            "Ya existe un archivo con ese nombre.");
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "elsewhere"));
}

TEST_F(LocalFiles, AMovedFileHasItsNewNameAlone) {
  const auto from = folder.write("from", "nuevo");
  ASSERT_EQ(failureOf(files.moveItem(from, folder.url("to"))), "");
  EXPECT_EQ(contentsOf(folder.url("to")), "nuevo");
  EXPECT_FALSE(files.fileExists(from));
}

TEST_F(LocalFiles, AMoveNeverReplacesWhatIsThere) {
  const auto from = folder.write("from", "nuevo");
  const auto to = folder.write("to", "viejo");
  EXPECT_EQ(failureOf(files.moveItem(from, to)), "Ya existe un archivo con ese nombre.");
  EXPECT_EQ(contentsOf(to), "viejo");
  EXPECT_EQ(contentsOf(from), "nuevo");
}

TEST_F(LocalFiles, OnlyAFileCanBeCopied) {
  const auto to = folder.url("to");
  EXPECT_EQ(failureOf(files.copyItem(folder.url("missing"), to)),
            "El archivo o su carpeta no existe.");
  EXPECT_EQ(failureOf(files.copyItem(FileURL(folder.path()), to)),
            "Hay una carpeta con ese nombre.");
  ASSERT_EQ(::mkfifo(folder.url("pipe").path().c_str(), 0600), 0);
  EXPECT_EQ(failureOf(files.copyItem(folder.url("pipe"), to)),
            "No es un archivo que se pueda copiar.");
  EXPECT_FALSE(files.fileExists(to));
}

TEST_F(LocalFiles, APlaceThatCannotBeWrittenToSaysWhy) {
  const auto from = folder.write("from", "x");
  EXPECT_EQ(failureOf(files.copyItem(from, folder.url("missing/to"))),
            "El archivo o su carpeta no existe.");
  EXPECT_EQ(failureOf(files.copyItem(from, folder.url("from/to"))),
            "Una parte de la ruta no es una carpeta.");
  EXPECT_EQ(failureOf(files.copyItem(from, folder.url(std::string(256, 'a')))),
            "El nombre del archivo es demasiado largo.");
}

TEST_F(LocalFiles, ANameOf255BytesIsNotTooLong) {
  const auto from = folder.write("from", "x");
  const auto to = folder.url(std::string(251, 'a') + ".m4r");
  EXPECT_EQ(failureOf(files.copyItem(from, to)), "");
  EXPECT_EQ(contentsOf(to), "x");
}

TEST_F(LocalFiles, AFileOverTheSizeLimitLeavesNothing) {
  const auto from = folder.write("from", std::string(100'000, 'x'));
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit small = before;
  small.rlim_cur = 65'536;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const auto result = files.copyItem(from, folder.url("to"));
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(std::signal(SIGXFSZ, handler), SIG_IGN);
  EXPECT_EQ(failureOf(result), "El archivo supera el tamaño máximo permitido.");
  EXPECT_FALSE(files.fileExists(folder.url("to")));
}

TEST_F(LocalFiles, AFullDiskLeavesNothing) {
  const auto from = folder.write("from", std::string(100'000, 'x'));
  const auto disk = folder.path() / "disk";
  if (!mountSmallDisk(disk)) GTEST_SKIP() << "no disk can be mounted: " << std::strerror(errno);
  const FileURL to(disk / "to");
  EXPECT_EQ(failureOf(files.copyItem(from, to)), "No queda espacio en el disco.");
  EXPECT_FALSE(files.fileExists(to));
  ::umount(disk.c_str());
}

TEST_F(LocalFiles, AReadOnlyDiskSaysSo) {
  const auto from = folder.write("from", "x");
  const auto disk = folder.path() / "disk";
  if (!mountSmallDisk(disk)) GTEST_SKIP() << "no disk can be mounted: " << std::strerror(errno);
  const FileURL there(disk / "there");
  ASSERT_EQ(failureOf(files.copyItem(from, there)), "") << "another disk is no obstacle";
  ASSERT_EQ(::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  EXPECT_EQ(failureOf(files.copyItem(from, FileURL(disk / "to"))), "El disco es de solo lectura.");
  EXPECT_EQ(failureOf(files.removeItem(there)), "El disco es de solo lectura.");
  EXPECT_TRUE(files.fileExists(there));
  ::umount(disk.c_str());
}

TEST_F(LocalFiles, WhateverHasTheNameExists) {
  EXPECT_FALSE(files.fileExists(folder.url("x")));
  EXPECT_TRUE(files.fileExists(folder.write("file", "")));
  EXPECT_TRUE(files.fileExists(FileURL(folder.path())));
  std::filesystem::create_symlink("nowhere", folder.path() / "link");
  EXPECT_TRUE(files.fileExists(folder.url("link")))
      << "a link to nothing has the name all the same";
}

TEST_F(LocalFiles, RemovingALinkKeepsWhatItNames) {
  const auto song = folder.write("song", "x");
  std::filesystem::create_symlink(song.path(), folder.path() / "link");
  EXPECT_EQ(failureOf(files.removeItem(folder.url("link"))), "");
  EXPECT_FALSE(files.fileExists(folder.url("link")));
  EXPECT_EQ(contentsOf(song), "x");
}

TEST_F(LocalFiles, AFolderIsNeverRemoved) {
  std::filesystem::create_directory(folder.path() / "album");
  folder.write("album/song", "x");
  EXPECT_EQ(failureOf(files.removeItem(folder.url("album"))), "Hay una carpeta con ese nombre.");
  EXPECT_EQ(contentsOf(folder.url("album/song")), "x");
}

TEST_F(LocalFiles, RemovingWhatIsNotThereFails) {
  EXPECT_EQ(failureOf(files.removeItem(folder.url("x"))), "El archivo o su carpeta no existe.");
}

TEST_F(LocalFiles, ANamesBytesReachTheDiskAsTheyAre) {
  for (const std::string name : {"a\xFF\xFE.m4r", "uno\ndos", " tono ", ".tono", "100%", "ñ"}) {
    const auto from = folder.write("from", name);
    const auto to = folder.url(name);
    ASSERT_EQ(failureOf(files.copyItem(from, to)), "") << name;
    EXPECT_EQ(contentsOf(to), name);
    EXPECT_EQ(failureOf(files.removeItem(to)), "");
    EXPECT_FALSE(files.fileExists(to));
  }
}

TEST_F(LocalFiles, TheTemporaryFolderIsTheOneThatTheSystemNames) {
  ::setenv("TMPDIR", "/var/tmp/", 1);
  EXPECT_EQ(files.temporaryDirectory(), FileURL("/var/tmp"));
  ::setenv("TMPDIR", "/nowhere", 1);
  EXPECT_EQ(files.temporaryDirectory(), FileURL("/tmp")) << "as the one named is not there";
  ::setenv("TMPDIR", "relative", 1);
  EXPECT_EQ(files.temporaryDirectory(), FileURL("/tmp"));
  ::unsetenv("TMPDIR");
  EXPECT_EQ(files.temporaryDirectory(), FileURL("/tmp"));
}

}  // namespace
}  // namespace quibel::desktop
