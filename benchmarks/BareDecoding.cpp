#include "benchmarks/BareDecoding.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <cstdint>
#include <stdexcept>

namespace quibel::benchmarks {

void decodeBarely(const std::filesystem::path& file) {
  AVFormatContext* format = nullptr;
  if (avformat_open_input(&format, file.c_str(), nullptr, nullptr) < 0 ||
      avformat_find_stream_info(format, nullptr) < 0) {
    throw std::runtime_error("ffmpeg cannot open " + file.string());
  }
  const int stream = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
  AVCodecParameters* const parameters = format->streams[stream]->codecpar;
  const AVCodec* const kind = avcodec_find_decoder(parameters->codec_id);
  AVCodecContext* codec = avcodec_alloc_context3(kind);
  avcodec_parameters_to_context(codec, parameters);
  codec->thread_count = 1;
  avcodec_open2(codec, kind, nullptr);
  AVPacket* packet = av_packet_alloc();
  AVFrame* frame = av_frame_alloc();
  std::int64_t frames = 0;
  while (av_read_frame(format, packet) >= 0) {
    if (packet->stream_index == stream && avcodec_send_packet(codec, packet) >= 0) {
      while (avcodec_receive_frame(codec, frame) >= 0) frames += frame->nb_samples;
    }
    av_packet_unref(packet);
  }
  avcodec_send_packet(codec, nullptr);
  while (avcodec_receive_frame(codec, frame) >= 0) frames += frame->nb_samples;
  av_frame_free(&frame);
  av_packet_free(&packet);
  avcodec_free_context(&codec);
  avformat_close_input(&format);
  if (frames == 0) throw std::runtime_error("nothing decoded");
}

}  // namespace quibel::benchmarks
