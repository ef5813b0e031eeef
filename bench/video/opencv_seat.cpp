// SPDX-License-Identifier: Apache-2.0
// The way many would take first: OpenCV's reader, every frame as a whole picture, one pixel of it.
//   opencv_seat VIDEO X Y
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>

int main(int argumentCount, char** arguments) {
  if (argumentCount != 4) return 2;
  cv::VideoCapture video(arguments[1], cv::CAP_FFMPEG);
  if (!video.isOpened()) return 1;
  const int x = std::atoi(arguments[2]);
  const int y = std::atoi(arguments[3]);
  cv::Mat frame;
  std::uint32_t sum = 0;
  int frames = 0;
  for (; video.read(frame); ++frames) {
    const auto& pixel = frame.at<cv::Vec3b>(y, x);
    sum = sum * 31 + (pixel[2] << 16 | pixel[1] << 8 | pixel[0]);
  }
  std::printf("%d frames, %08X\n", frames, sum);
  return frames > 0 ? 0 : 1;
}
