/* SPDX-License-Identifier: Apache-2.0
 * A host in C99: hears one packet and looks at what it shows. Exit status 0 if that is orange. */
#include <stdio.h>

#include "halvora.h"

static int torch = 0;

static void set(void* context, int which, int is_on) {
  (void)context;
  if (which == HALVORA_SWITCH_TORCH) torch = is_on;
}

static int failed(const char* what, int status) {
  fprintf(stderr, "%s: %s\n", what, halvora_status_text(status));
  return 1;
}

int main(void) {
  /* Mode 1, orange, full brightness, the torch on. */
  static const uint8_t orange[26] = {0x09, 0xC9, 0x01, 0x02, 0x00, 0x07, 0x00, 0xFF, 0xFF,
                                     0x80, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00,
                                     0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x07};
  halvora_callbacks callbacks = {0};
  halvora_options options;
  halvora_phone* phone = NULL;
  halvora_item light = {0};
  size_t count = 0;
  int status;

  callbacks.size = sizeof(callbacks);
  callbacks.set = set;
  status = halvora_options_init(&options, sizeof(options));
  if (status != HALVORA_OK) return failed("options", status);
  status = halvora_phone_make(&callbacks, &options, &phone);
  if (status != HALVORA_OK) return failed("make", status);
  halvora_phone_start(phone);
  halvora_phone_run_until(phone, 1500000);
  status = halvora_phone_advertisement(phone, orange, sizeof(orange));
  if (status != HALVORA_OK) return failed("advertisement", status);
  halvora_phone_run_until(phone, 2500000);
  status = halvora_phone_look(phone, options.width, options.height, &count);
  if (status != HALVORA_OK || count == 0) return failed("look", status);
  light.size = sizeof(light);
  status = halvora_phone_item(phone, 0, &light);
  if (status != HALVORA_OK) return failed("item", status);
  printf("%s: light %.2f %.2f %.2f, torch %d\n", halvora_version(), (double)light.red,
         (double)light.green, (double)light.blue, torch);
  halvora_phone_free(phone);
  return light.red > 0.99F && light.blue < 0.01F && torch == 1 ? 0 : 1;
}
