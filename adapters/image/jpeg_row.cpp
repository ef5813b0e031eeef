// SPDX-License-Identifier: Apache-2.0
#include "adapters/image/jpeg_row.h"

#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <new>
#include <vector>

#include <jerror.h>
#include <jpeglib.h>

namespace halvora {

namespace {

// More scans than these make a small file take for ever.
constexpr int kMostScans = 500;

enum class End : std::uint8_t { read, damaged, noMemory };

// All of it plain values: the library leaves its functions by a jump.
struct Reading {
  jpeg_decompress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg_progress_mgr progress;
  std::jmp_buf isOver;
  const unsigned char* data;
  std::size_t size;
  JDIMENSION row;
  JSAMPLE* rgba;
  /// Room for the last row.
  JSAMPLE* last;
};

Reading& readingOf(j_common_ptr jpeg) noexcept { return *static_cast<Reading*>(jpeg->client_data); }

// What the library calls. A warning means that the data ended early or is damaged.
[[noreturn]] void giveUp(j_common_ptr jpeg) noexcept { std::longjmp(readingOf(jpeg).isOver, 1); }
void hear(j_common_ptr jpeg, int level) noexcept {
  if (level < 0) giveUp(jpeg);
}
void countScans(j_common_ptr jpeg) noexcept {
  if (readingOf(jpeg).jpeg.input_scan_number > kMostScans) giveUp(jpeg);
}

// The settings are those that whole pictures are decoded with.
void readRow(Reading& reading) {
  jpeg_decompress_struct& jpeg = reading.jpeg;
  jpeg_create_decompress(&jpeg);
  jpeg.progress = &reading.progress;
  jpeg.mem->max_memory_to_use = static_cast<long>(kMostJpegCoefficients);
  jpeg_mem_src(&jpeg, reading.data, reading.size);
  jpeg_read_header(&jpeg, TRUE);
  jpeg.out_color_space = JCS_EXT_RGBA;
  jpeg_start_decompress(&jpeg);
  if (reading.row > 0) jpeg_skip_scanlines(&jpeg, reading.row);
  jpeg_read_scanlines(&jpeg, &reading.rgba, 1);
  // To the end of the data: skipping beyond the last row would leave it unread.
  const JDIMENSION left = jpeg.output_height - jpeg.output_scanline;
  if (left > 1) jpeg_skip_scanlines(&jpeg, left - 1);
  if (left > 0) jpeg_read_scanlines(&jpeg, &reading.last, 1);
  jpeg_finish_decompress(&jpeg);
}

End run(Reading& reading) {
  // Nothing between here and the jump has a destructor.
  const bool isOver = setjmp(reading.isOver) != 0;
  if (!isOver) readRow(reading);
  jpeg_destroy_decompress(&reading.jpeg);
  if (!isOver) return End::read;
  return reading.errors.msg_code == JERR_OUT_OF_MEMORY ? End::noMemory : End::damaged;
}

}  // namespace

bool readJpegRow(std::string_view bytes, std::uint32_t row, std::span<std::uint8_t> rgba) {
  Reading reading{};
  reading.jpeg.err = jpeg_std_error(&reading.errors);
  reading.jpeg.client_data = &reading;
  reading.errors.error_exit = &giveUp;
  reading.errors.emit_message = &hear;
  reading.progress.progress_monitor = &countScans;
  reading.data = reinterpret_cast<const unsigned char*>(bytes.data());
  reading.size = bytes.size();
  reading.row = row;
  reading.rgba = rgba.data();
  std::vector<JSAMPLE> last(rgba.size());
  reading.last = last.data();
  const End end = run(reading);
  if (end == End::noMemory) throw std::bad_alloc();
  return end == End::read;
}

}  // namespace halvora
