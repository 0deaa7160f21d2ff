#pragma once

// Owning pointers to FFmpeg's objects.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/vorbis_parser.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <memory>

#include "song/file/Versions.h"  // IWYU pragma: export

namespace quibel::song {

/// Frees through FFmpeg's functions that take the address of the pointer.
template <auto free>
struct FreeByAddress {
  template <class T>
  void operator()(T* object) const {
    free(&object);
  }
};

struct FreeIO {
  void operator()(AVIOContext* io) const {
    // FFmpeg may have replaced the buffer that it was given.
    av_freep(static_cast<void*>(&io->buffer));
    avio_context_free(&io);
  }
};

struct FreeFormatOutput {
  void operator()(AVFormatContext* format) const { avformat_free_context(format); }
};

using PacketPointer = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using FramePointer = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using CodecPointer = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using ParametersPointer =
    std::unique_ptr<AVCodecParameters, FreeByAddress<avcodec_parameters_free>>;
using InputFormatPointer = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using OutputFormatPointer = std::unique_ptr<AVFormatContext, FreeFormatOutput>;
using ResamplerPointer = std::unique_ptr<SwrContext, FreeByAddress<swr_free>>;
using DictionaryPointer = std::unique_ptr<AVDictionary, FreeByAddress<av_dict_free>>;
using IOPointer = std::unique_ptr<AVIOContext, FreeIO>;

}  // namespace quibel::song
