/* SPDX-License-Identifier: Apache-2.0
 * A host in C99 with the kit's decoders: a seat of a pixel map, whose table is built from the video
 * when its first packet comes. Exit status 0 if the seat then shows what the video has there.
 *
 * halvora_c99_seat ASSETS
 */
#include <stdio.h>

#include "halvora.h"

static int failed(const char* what, int status) {
  fprintf(stderr, "%s: %s\n", what, halvora_status_text(status));
  return 1;
}

static void count_pixels(void* into, uint32_t width, uint32_t height, const uint8_t* rgba) {
  (void)rgba;
  *(uint64_t*)into = (uint64_t)width * height;
}

int main(int argument_count, char** arguments) {
  /* Venue 7, mode 0, pixel map 1, frame 30. */
  uint8_t packet[26] = {0x09, 0xC9, 0x10, 0x92, 0x00, 0x07, 0x01, 0xFF, 0x00,
                        0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x1E, 0x00,
                        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01};
  halvora_media media;
  halvora_options options;
  halvora_phone* phone = NULL;
  halvora_item light = {0};
  size_t count = 0;
  uint64_t pixels = 0;
  int64_t time = 1500000;
  int step;
  int status;

  if (argument_count != 2) return failed("arguments", HALVORA_MISSING);
  status = halvora_standard_media(&media, sizeof(media));
  if (status != HALVORA_OK) return failed("media", status);
  status = media.picture(media.context, "no picture", 10, count_pixels, &pixels);
  if (status != HALVORA_NONE || pixels != 0) return failed("picture", status);
  halvora_options_init(&options, sizeof(options));
  options.assets = arguments[1];
  options.media = &media;
  status = halvora_phone_make(NULL, &options, &phone);
  if (status != HALVORA_OK) return failed("make", status);
  halvora_phone_set_default(phone, "selectedSection", "Section 209");
  halvora_phone_set_default(phone, "selectedRow", "Row 8");
  halvora_phone_set_default(phone, "selectedSeat", "Seat 10");
  halvora_phone_set_default(phone, "xPos", "362");
  halvora_phone_set_default(phone, "yPos", "404");
  halvora_phone_start(phone);
  halvora_phone_run_until(phone, time);
  for (step = 1; step <= 10; ++step) {
    packet[24] = (uint8_t)step;
    halvora_phone_advertisement(phone, packet, sizeof(packet));
    time += 100000;
    halvora_phone_run_until(phone, time);
  }
  halvora_phone_look(phone, options.width, options.height, &count);
  light.size = sizeof(light);
  status = halvora_phone_item(phone, 0, &light);
  if (status != HALVORA_OK) return failed("item", status);
  printf("the seat shows %.4f %.4f %.4f\n", (double)light.red, (double)light.green,
         (double)light.blue);
  halvora_phone_free(phone);
  /* The demo's first video is blue there. */
  return light.blue > 0.62F && light.blue < 0.66F && light.red < 0.11F ? 0 : 1;
}
