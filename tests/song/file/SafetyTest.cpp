// Texts that name other files or addresses, under the names of songs: opening
// one must open nothing else and reach nothing. Each is opened in a process of
// its own that the kernel ends at any other open and at any socket.

#include <algorithm>
#include <array>
#include <cstddef>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "song/decoding/OpenSong.h"
#include "song/file/Input.h"
#include "tests/song/Songs.h"

namespace quibel::test {
namespace {

// Ends the process at every call that opens a file or begins with the network.
// Reading what is open already goes on.
bool forbidOpening() {
  constexpr std::array calls{
#ifdef SYS_open
      SYS_open,   SYS_creat,
#endif
      SYS_openat, SYS_openat2, SYS_socket, SYS_connect, SYS_bind, SYS_execve};
  std::vector<sock_filter> program;
  program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
  for (const auto call : calls) {
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 1));
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS));
  }
  program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

enum class Outcome { refused, opened, killed, unknown };

Outcome openAndRead(int descriptor) {
  const auto size = lseek(descriptor, 0, SEEK_END);
  const auto song = song::openAudioFile(std::make_shared<song::Input>(
      descriptor, song::FileIdentity{.size = size}, std::stop_token{}));
  if (!song) return Outcome::refused;
  return readAll(**song).frames() > 0 ? Outcome::opened : Outcome::refused;
}

/// Runs `work` in a process that may open nothing.
template <class Work>
Outcome confined(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    const Outcome outcome = forbidOpening() ? work() : Outcome::unknown;
    _exit(static_cast<int>(outcome));
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child) return Outcome::unknown;
  if (WIFSIGNALED(status)) return Outcome::killed;
  return static_cast<Outcome>(WEXITSTATUS(status));
}

class Safety : public testing::Test {
 protected:
  void SetUp() override {
    writeWav(file("other.wav"), song(44'100, 1, 44'100));
    run({"lame", "--quiet", file("other.wav"), file("other.mp3")});
  }

  std::string file(const std::string& name) const { return (directory_.path() / name).string(); }

  /// The text under the names of songs of every kind.
  void expectRefusedWithoutOpening(const std::string& text) {
    for (const char* name : {"song.mp3", "song.wav", "song.m4a", "song.ogg", "song.flac"}) {
      writeBytes(file(name), {text.begin(), text.end()});
      const int descriptor = open(file(name).c_str(), O_RDONLY | O_CLOEXEC);
      EXPECT_EQ(confined([&] { return openAndRead(descriptor); }), Outcome::refused) << name;
      close(descriptor);
    }
  }

  TemporaryDirectory directory_;
};

TEST_F(Safety, ConfinementEndsWhateverOpensAFile) {
  const auto outcome = confined([&] {
    return open(file("other.mp3").c_str(), O_RDONLY | O_CLOEXEC) >= 0 ? Outcome::opened
                                                                      : Outcome::refused;
  });
  EXPECT_EQ(outcome, Outcome::killed);
}

TEST_F(Safety, SongsOpenNothingBesideThemselves) {
  for (const char* name : {"other.mp3", "other.wav"}) {
    const int descriptor = open(file(name).c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(confined([&] { return openAndRead(descriptor); }), Outcome::opened) << name;
    close(descriptor);
  }
}

TEST_F(Safety, HlsPlaylist) {
  for (const std::string& target : {file("other.mp3"), "file://" + file("other.mp3"),
                                    std::string("http://127.0.0.1:9/a.mp3")}) {
    expectRefusedWithoutOpening(
        "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\n" + target +
        "\n#EXT-X-ENDLIST\n");
  }
}

TEST_F(Safety, DashManifest) {
  expectRefusedWithoutOpening(
      "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
      "mediaPresentationDuration=\"PT1S\"><Period><AdaptationSet mimeType=\"audio/mp4\">"
      "<Representation id=\"1\" bandwidth=\"1\"><BaseURL>" +
      file("other.mp3") + "</BaseURL></Representation></AdaptationSet></Period></MPD>");
}

TEST_F(Safety, SessionDescription) {
  expectRefusedWithoutOpening(
      "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
      "m=audio 5004 RTP/AVP 14\n");
}

TEST_F(Safety, ConcatenationScript) {
  expectRefusedWithoutOpening("ffconcat version 1.0\nfile '" + file("other.mp3") + "'\n");
}

TEST_F(Safety, Subtitles) {
  expectRefusedWithoutOpening("1\n00:00:00,000 --> 00:00:01,000\nHola\n\n");
  expectRefusedWithoutOpening("WEBVTT\n\n00:00.000 --> 00:01.000\nHola\n");
  expectRefusedWithoutOpening("[Script Info]\nScriptType: v4.00+\n\n[Events]\n");
}

TEST_F(Safety, ImageSequence) {
  expectRefusedWithoutOpening(file("picture%03d.png"));
  expectRefusedWithoutOpening("#EXTM3U\n" + file("other.mp3") + "\n");
  expectRefusedWithoutOpening("[playlist]\nFile1=" + file("other.mp3") + "\n");
}

TEST_F(Safety, MovieThatRefersToAnotherFile) {
  run({"ffmpeg", "-v", "error", "-i", file("other.wav"), "-c:a", "pcm_s16le", file("song.mov")});
  auto bytes = readBytes(file("song.mov"));
  // The data reference no longer says "in this file".
  const std::string reference = "url ";
  const auto found = std::search(bytes.begin(), bytes.end(), reference.begin(), reference.end());
  ASSERT_NE(found, bytes.end());
  *(found + 7) = 0;
  writeBytes(file("song.mov"), bytes);
  const int descriptor = open(file("song.mov").c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_NE(confined([&] { return openAndRead(descriptor); }), Outcome::killed);
  close(descriptor);
}

}  // namespace
}  // namespace quibel::test
