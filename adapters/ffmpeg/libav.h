// SPDX-License-Identifier: Apache-2.0
// Owners for the objects of libavformat and libavcodec, and how these are kept from printing. The
// objects belong to one thread each.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>
#include <new>

namespace halvora {

struct LibavDeleter {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

template <class Object>
using LibavPointer = std::unique_ptr<Object, LibavDeleter>;

/// What the library was to make. It makes nothing only where memory is short: std::bad_alloc, as
/// everywhere.
template <class Object>
LibavPointer<Object> madeByLibav(Object* object) {
  if (object == nullptr) throw std::bad_alloc();
  return LibavPointer<Object>(object);
}
/// A result of the library's, where it is not for want of memory.
inline int checkedForMemory(int result) {
  if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
  return result;
}

/// What a context adds to the level of its messages, so that none is severe enough to be printed.
/// The level itself, and what becomes of messages, belong to the host. Above 255 begin the colours.
inline constexpr int kSilence = 100;

}  // namespace halvora
