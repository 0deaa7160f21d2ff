#include <atomic>

#include "song/file/Pointers.h"
#include "tests/export/Workshop.h"
#include "tests/support/SystemCall.h"

// Stands in for FFmpeg's calls that make a ringtone, so that any one of them can fail.
namespace {

using quibel::test::original;

std::atomic<int> callsUntilFailure = 0;  // 0: none fails

bool failsNow() {
  int left = callsUntilFailure;
  while (left > 0 && !callsUntilFailure.compare_exchange_weak(left, left - 1)) {
  }
  return left == 1;
}

}  // namespace

extern "C" int avcodec_send_frame(AVCodecContext* avctx, const AVFrame* frame) {
  static auto* const real = original<int(AVCodecContext*, const AVFrame*)>("avcodec_send_frame");
  return failsNow() ? AVERROR_EXTERNAL : real(avctx, frame);
}

extern "C" int avcodec_receive_packet(AVCodecContext* avctx, AVPacket* avpkt) {
  static auto* const real = original<int(AVCodecContext*, AVPacket*)>("avcodec_receive_packet");
  return failsNow() ? AVERROR_EXTERNAL : real(avctx, avpkt);
}

extern "C" int avformat_write_header(AVFormatContext* s, AVDictionary** options) {
  static auto* const real =
      original<int(AVFormatContext*, AVDictionary**)>("avformat_write_header");
  return failsNow() ? AVERROR_EXTERNAL : real(s, options);
}

extern "C" int av_write_frame(AVFormatContext* s, AVPacket* pkt) {
  static auto* const real = original<int(AVFormatContext*, AVPacket*)>("av_write_frame");
  return failsNow() ? AVERROR_EXTERNAL : real(s, pkt);
}

extern "C" int av_write_trailer(AVFormatContext* s) {
  static auto* const real = original<int(AVFormatContext*)>("av_write_trailer");
  return failsNow() ? AVERROR_EXTERNAL : real(s);
}

namespace quibel::test {
namespace {

class Encoder : public RingtoneTest {
 protected:
  Encoder() {
    workshop.model->endBinding().set(0.1);  // a call's failure for each of few packets
    whole = ringtoneOf(workshop);
  }
};

TEST_F(Encoder, ThatFailsAtAnyOfItsStepsMakesNoRingtone) {
  int step = 1;
  for (; step < 100; ++step) {
    callsUntilFailure = step;
    workshop.model->showAlertBinding().set(false);
    workshop.exportTo(tone);
    const bool failed = callsUntilFailure == 0;
    callsUntilFailure = 0;
    if (!failed) break;
    EXPECT_TRUE(workshop.alert() ==
                    "No se ha podido crear el tono. El codificador AAC ha fallado." ||
                workshop.alert() ==
                    "No se ha podido crear el tono. No se puede escribir el archivo temporal.")
        << step << ": " << workshop.alert();
    expectNothingHappened();
  }
  EXPECT_GT(step, 15);
  expectSaved(tone);
}

}  // namespace
}  // namespace quibel::test
