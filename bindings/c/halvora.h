// SPDX-License-Identifier: Apache-2.0
/* The kit in C: one phone of a light show, for hosts in C and in every language that can call it.
 * A host makes a phone out of callbacks, each of which may be absent, hands it what its radio
 * hears, lets it work at its times, and asks what to draw.
 *
 * Time is in microseconds since a moment of the host's choice and never goes back. A phone works
 * only within the host's calls, up to the time that its clock callback says, or, without one, that
 * it was told last.
 *
 * One thread calls a phone at a time. A phone may be called from within its own callbacks, but for
 * those that run it and halvora_phone_free, which are refused there.
 *
 * Every function that can fail answers with a status and leaves its results alone where it fails.
 * Texts are UTF-8. Pointers that a function hands out are good until the next call for that phone.
 * Every struct begins with its size as its user knows it, so that later versions may add members:
 * set it with sizeof. Nothing that stands here is ever taken away or given another meaning within
 * a version of the interface.
 */
#ifndef HALVORA_H
#define HALVORA_H

#include <stddef.h>
#include <stdint.h>

/* The number of this interface: another one breaks who was compiled with this one. */
#define HALVORA_C_INTERFACE 1

/* Stands at every function; only static libraries are built for Windows. */
#if defined(_WIN32)
#define HALVORA_C_PUBLIC
#else
#define HALVORA_C_PUBLIC __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* What became of a call. */
typedef enum halvora_status {
  /* Done. */
  HALVORA_OK = 0,
  /* A pointer that may not be null is, or a struct's size is too small to be any version's. */
  HALVORA_MISSING = 1,
  /* A number that is out of its range, or a text that is none. */
  HALVORA_RANGE = 2,
  /* From within a callback, where this may not be called. */
  HALVORA_BUSY = 3,
  /* There is no such thing at present: no panel, no wizard, no such row. */
  HALVORA_NONE = 4,
  /* Memory is short; the same call may be tried again. */
  HALVORA_NO_MEMORY = 5,
  /* Anything else that went wrong within. */
  HALVORA_FAILED = 6
} halvora_status;

/* A sentence for a person; never null, whatever the number. Any thread. */
HALVORA_C_PUBLIC const char* halvora_status_text(int status);

/* "major.minor.patch" of the library that is there at run time. Any thread. */
HALVORA_C_PUBLIC const char* halvora_version(void);

/* One phone; a host holds its address and nothing of what is in it. */
typedef struct halvora_phone halvora_phone;

/* What is to be felt. */
typedef enum halvora_haptic {
  /* One light tap. */
  HALVORA_HAPTIC_LIGHT = 0,
  /* One heavy tap. */
  HALVORA_HAPTIC_HEAVY = 1,
  /* The system's sound that vibrates the phone. */
  HALVORA_HAPTIC_SOUND = 2,
  /* Its end, also of one that has ended by itself. */
  HALVORA_HAPTIC_SOUND_ENDS = 3
} halvora_haptic;

/* What is on or off. */
typedef enum halvora_switch {
  /* The lamp beside the camera. */
  HALVORA_SWITCH_TORCH = 0,
  /* The radio is to listen, repeats included. */
  HALVORA_SWITCH_SCAN = 1,
  /* The screen is to stay on by itself no longer. */
  HALVORA_SWITCH_IDLE_TIMER_DISABLED = 2,
  /* The show wants the whole screen, without the system's bars. */
  HALVORA_SWITCH_STATUS_BAR_HIDDEN = 3
} halvora_switch;

/* What a host is told. */
typedef enum halvora_event {
  /* A look has another mode or speed than the one before, and its mode is not 0. */
  HALVORA_EVENT_SHOW_STARTED = 0,
  /* A look has come with mode 0. */
  HALVORA_EVENT_SHOW_STOPPED = 1,
  /* The light may look different from now on, or begin to move. */
  HALVORA_EVENT_LIGHT_CHANGED = 2,
  /* Something of the panel or its wizard is to be read anew. */
  HALVORA_EVENT_PANEL_CHANGED = 3,
  /* The user wants the system's page of settings for the application. */
  HALVORA_EVENT_OPEN_SETTINGS = 4
} halvora_event;

/* What a phone asks of its host. All are called on the thread that calls the phone. */
typedef struct halvora_callbacks {
  size_t size; /* sizeof(halvora_callbacks). */
  /* Handed to each of them. */
  void* context;

  /* Absent: the time is what halvora_phone_run_until was told last. */
  int64_t (*now)(void* context);
  /* There is nothing to do before that time, at which halvora_phone_run is to be called; INT64_MAX
   * for nothing at all. */
  void (*wake_at)(void* context, int64_t time);

  /* `which` is a halvora_switch, `is_on` 0 or 1. Absent: there is no such switch, but for the scan,
   * which the host is then to do all the time. */
  void (*set)(void* context, int which, int is_on);
  /* A halvora_haptic. Absent: nothing is felt. */
  void (*haptic)(void* context, int haptic);
  /* A halvora_event. Absent: the host looks for itself. */
  void (*event)(void* context, int event);

  /* The backlight's level, 0 to 1. Absent: what was set last, at first 1. */
  double (*brightness)(void* context);
  /* The level, 0 to 1. Absent: nobody can set it. */
  void (*set_brightness)(void* context, double level);

  /* 0 not determined, 1 restricted, 2 denied, 3 allowed. Absent: allowed. */
  int (*radio_permission)(void* context);
  /* The user is to be asked. */
  void (*ask_radio_permission)(void* context);

  /* The small values that last, as one document. Writes at most `room` bytes and answers how many
   * there are, or below 0 for none; where there are more than there was room for it is called
   * again. This and the next absent: they are kept in the documents folder, and without one in
   * memory. */
  int64_t (*read_defaults)(void* context, void* into, size_t room);
  /* The same document whole; 0 where that failed, and it is called again later. */
  int (*write_defaults)(void* context, const void* bytes, size_t count);

  /* A whole file by its absolute path, for what lies in the assets and documents folders, as
   * `read_defaults` answers. Absent: the machine's own files. */
  int64_t (*read_file)(void* context, const char* path, void* into, size_t room);
  /* Puts a whole file in place; 0 where it failed and nothing has changed. */
  int (*write_file)(void* context, const char* path, const void* bytes, size_t count);
  /* 0 where there is nothing; else 1 for a file and 2 for a folder, with its size in bytes and
   * seconds since 1970. Both pointers are never null. */
  int (*look_at_file)(void* context, const char* path, uint64_t* bytes, double* modified_at);
  /* Calls `each` with `into` and the name of everything in a folder; 0 where it cannot. */
  int (*list_folder)(void* context, const char* path, void (*each)(void* into, const char* name),
                     void* into);
  /* A file, or a folder with all that is in it. */
  void (*remove_file)(void* context, const char* path);

  /* Fills in the 16 bytes of the AES-CMAC (RFC 4493) of a message with a key of 16 bytes; cannot
   * fail. Absent: no packet's tag is ever good. */
  void (*code)(void* context, const uint8_t* key, const uint8_t* message, size_t count,
               uint8_t* code);
} halvora_callbacks;

/* So many timescale-ths of a second, in a video. */
typedef struct halvora_time {
  int64_t value;     /* May be below 0. */
  int32_t timescale; /* Above 0. */
} halvora_time;

/* One frame of a video as its reader hands it out. */
typedef struct halvora_frame {
  /* The decoder's own, not null; free_frame is called for it, perhaps after its reader and its
   * video have gone. */
  void* handle;
  /* When it is presented; not a number where the file does not say. */
  double seconds;
  uint32_t width;  /* Pixels, as it is stored. */
  uint32_t height; /* Likewise. */
} halvora_frame;

/* Takes a whole picture: 4 bytes a pixel, red, green, blue, alpha, not premultiplied, rows from the
 * top. */
typedef void (*halvora_take_picture)(void* into, uint32_t width, uint32_t height,
                                     const uint8_t* rgba);

/* Decoders and players, for pixel maps, torch maps and clips. They are called as the callbacks are;
 * building a seat's table decodes a whole video within one call of the host. Every function that
 * answers with an int answers HALVORA_OK, HALVORA_NO_MEMORY where memory is short, which is then
 * tried again and not taken for a fault of the file, or HALVORA_NONE. */
typedef struct halvora_media {
  size_t size; /* sizeof(halvora_media). */
  /* Handed to each of them. */
  void* context;

  /* Decodes a JPEG or PNG file's bytes and calls `take` once. Absent: no picture is known. */
  int (*picture)(void* context, const void* bytes, size_t count, halvora_take_picture take,
                 void* into);

  /* Opens the first video track of a file, never as null, and says how long the file plays. Absent:
   * no video is known; where it is there, all of these are but the last two. */
  int (*open_video)(void* context, const char* path, void** video, double* seconds);
  /* Once for each that was opened, after its readers. */
  void (*close_video)(void* context, void* video);
  /* The frames that are presented from `begin` on, up to but not including `end`; all where both
   * are null. Readers of one video stand beside each other. */
  int (*open_reader)(void* context, void* video, const halvora_time* begin, const halvora_time* end,
                     void** reader);
  /* Once for each that was opened; its frames may still be there. */
  void (*close_reader)(void* context, void* reader);
  /* The next frame in the order of presentation, not turned; HALVORA_NONE at the end. */
  int (*next_frame)(void* context, void* reader, halvora_frame* frame);
  /* The words 0xAARRGGBB of those pixels; `places` has a column and a row for each. */
  void (*sample)(void* context, void* frame, const uint32_t* places, uint32_t* words, size_t count);
  /* Once for each frame that was handed out. */
  void (*free_frame)(void* context, void* frame);
  /* 1 where pictures did not come out that the file should have; asked at the end. */
  int (*has_lost_pictures)(void* context, void* reader);
  /* The picture on show at that time, turned as the file asks for. */
  int (*picture_at)(void* context, void* video, const halvora_time* time, halvora_take_picture take,
                    void* into);

  /* Two players of clips, 0 and 1, which loop and which the host draws where an item says so.
   * Absent: no clip is ever ready. The path is empty for a clip that is not there. */
  void (*load_clip)(void* context, int player, const char* name, const char* path);
  /* Goes on from where it stands (1), or stands still (0). */
  void (*play_clip)(void* context, int player, int is_playing);
  /* Goes to that position, in microseconds from the clip's beginning. */
  void (*seek_clip)(void* context, int player, int64_t position);
  /* Whether what was loaded can be played from any position. */
  int (*is_clip_ready)(void* context, int player);
} halvora_media;

/* Decoders by libpng, libjpeg-turbo and FFmpeg, for a host that has none of its own; no players. In
 * a library beside this one, halvora_c_media, so that nobody else links any of these. `size` is
 * sizeof(halvora_media). Any thread. */
HALVORA_C_PUBLIC int halvora_standard_media(halvora_media* media, size_t size);

/* What a phone is made with. */
typedef struct halvora_options {
  size_t size; /* sizeof(halvora_options); halvora_options_init sets it. */
  /* The folder that holds HVAssets and strings; null for none. */
  const char* assets;
  /* The folder for what is kept: tables, venues, defaults; null for none. */
  const char* documents;
  /* The user's languages, best first, with commas between them ("de-AT,en"); null for those of the
   * environment. */
  const char* languages;
  double width;  /* Of the screen, in points, above 0 and at most a million. */
  double height; /* Likewise. */
  /* What chance begins with. */
  uint64_t seed;
  int has_torch; /* Whether there is a lamp that the host can switch. */
  /* The venue of the panel as long as no transmitter has been heard; below 1 for none. */
  int64_t default_venue;
  /* Copied; null for none. */
  const halvora_media* media;
  /* The key of a show that signs its packets, 16 bytes, which are copied; null for none. */
  const uint8_t* show_key;
  /* What it is for: 0 nothing, 1 once a tag was good what has none is ignored for ten seconds, 2
   * only what has a good tag is obeyed. */
  int authentication;
  /* Of packets without a tag only those are obeyed that go on from what was heard. */
  int guards_air;
} halvora_options;

/* Sets every member to what suits a plain phone of 390 by 844 points. */
HALVORA_C_PUBLIC int halvora_options_init(halvora_options* options, size_t size);

/* A phone whose view is loaded. Callbacks and options are copied; either may be null. */
HALVORA_C_PUBLIC int halvora_phone_make(const halvora_callbacks* callbacks,
                                        const halvora_options* options, halvora_phone** phone);
/* Null is fine. */
HALVORA_C_PUBLIC int halvora_phone_free(halvora_phone* phone);

/* Begins to listen, if the user has allowed it. */
HALVORA_C_PUBLIC int halvora_phone_start(halvora_phone* phone);
/* Does what is due by now, as the clock callback says. */
HALVORA_C_PUBLIC int halvora_phone_run(halvora_phone* phone);
/* The same up to and including that time, at least 0; one that has passed changes nothing. */
HALVORA_C_PUBLIC int halvora_phone_run_until(halvora_phone* phone, int64_t time);
/* The same with what is due before that time only, which it is then: what the host hands in next
 * comes before what the phone has to do at it, as in a recording. */
HALVORA_C_PUBLIC int halvora_phone_run_before(halvora_phone* phone, int64_t time);

/* One advertisement's manufacturer data, the company's id first, low byte before high. What is no
 * show's is passed over. */
HALVORA_C_PUBLIC int halvora_phone_advertisement(halvora_phone* phone, const uint8_t* bytes,
                                                 size_t count);
/* 0 unknown, 1 resetting, 2 unsupported, 3 not authorised, 4 off, 5 on; at first on. */
HALVORA_C_PUBLIC int halvora_phone_radio_state(halvora_phone* phone, int state);
/* The application became active (1), or will resign (0). */
HALVORA_C_PUBLIC int halvora_phone_active(halvora_phone* phone, int is_active);
/* The screen's size in points from now on, each from 0 to a million. */
HALVORA_C_PUBLIC int halvora_phone_resize(halvora_phone* phone, double width, double height);
/* Keys such as "4242:1", with commas between them; null or empty for all. */
HALVORA_C_PUBLIC int halvora_phone_allow(halvora_phone* phone, const char* transmitters);
/* Sets 1 while a transmitter that is obeyed is heard, else 0. */
HALVORA_C_PUBLIC int halvora_phone_inside_venue(halvora_phone* phone, int* is_inside);
/* How far what is obeyed can be believed: 0 nobody vouches for it, 1 a tag was good or one show is
 * undisputed, 2 two shows contest each other, which holds the look. */
HALVORA_C_PUBLIC int halvora_phone_trust(halvora_phone* phone, int* trust);
/* One of the small values that last: for a host that knows the seat itself ("selectedSection",
 * "xPos", …). Null removes it. */
HALVORA_C_PUBLIC int halvora_phone_set_default(halvora_phone* phone, const char* key,
                                               const char* text);

/* What a thing to draw is. */
typedef enum halvora_content {
  HALVORA_CONTENT_FILL = 0,  /* One colour. */
  HALVORA_CONTENT_TEXT = 1,  /* A text in the middle of its frame. */
  HALVORA_CONTENT_IMAGE = 2, /* A picture from a file. */
  HALVORA_CONTENT_VIDEO = 3  /* What a player of clips shows. */
} halvora_content;

/* One thing to draw, over those before it. */
typedef struct halvora_item {
  size_t size;   /* sizeof(halvora_item). */
  int content;   /* A halvora_content. */
  double x;      /* In the container's points, from its left. */
  double y;      /* From its top. */
  double width;  /* Points. */
  double height; /* Points. */
  /* 0 to 1, in sRGB; of an image what that channel is multiplied with. */
  float red;
  float green;    /* As red. */
  float blue;     /* As red. */
  double opacity; /* 0 clear to 1. */
  /* The text, or the picture's file; never null. */
  const char* text;
  double font_size; /* Points; 0 without a text. */
} halvora_item;

/* Makes the list of what is to be seen now in a container of that size, and answers how long it
 * is. The first item, if there is one, is the light. */
HALVORA_C_PUBLIC int halvora_phone_look(halvora_phone* phone, double width, double height,
                                        size_t* count);
/* Of the list that was made last. */
HALVORA_C_PUBLIC int halvora_phone_item(halvora_phone* phone, size_t index, halvora_item* item);
/* Whether a later moment may show something else without a word to the host. */
HALVORA_C_PUBLIC int halvora_phone_is_animating(halvora_phone* phone, int* is_animating);

/* The parts of the panel and of the wizard that it opens. */
typedef enum halvora_part {
  HALVORA_PANEL_ONBOARDING = 0,      /* Label: what the permission is for, until it is asked. */
  HALVORA_PANEL_STATUS = 1,          /* Label: whether the phone is in the venue, or why not. */
  HALVORA_PANEL_SEAT = 2,            /* Label: which seat is chosen. */
  HALVORA_PANEL_JOIN_BUTTON = 3,     /* Has the user asked for permission. */
  HALVORA_PANEL_SETTINGS_BUTTON = 4, /* Opens the application's page of settings. */
  HALVORA_PANEL_SEAT_BUTTON = 5,     /* Opens the wizard. */
  HALVORA_WIZARD_TITLE = 16,         /* Label: what is chosen here. */
  HALVORA_WIZARD_STEP = 17,          /* Label: what is to be done in this step. */
  HALVORA_WIZARD_SUMMARY = 18,       /* Label: what is chosen so far. */
  HALVORA_WIZARD_CLOSE_BUTTON = 19,  /* Leaves without storing anything. */
  HALVORA_WIZARD_BACK_BUTTON = 20,   /* To the step before. */
  HALVORA_WIZARD_NEXT_BUTTON = 21    /* To the next step, or stores the seat and leaves. */
} halvora_part;

/* A label or a button as it is to be seen. */
typedef struct halvora_text {
  size_t size;      /* sizeof(halvora_text). */
  const char* text; /* Never null. */
  int is_hidden;    /* Takes no room. */
  /* Of a button; a label is never. */
  int is_enabled;
  double alpha; /* 0 to 1; of 0 it is not seen and takes its room. */
  float red;    /* Of the letters, 0 to 1, in sRGB. */
  float green;  /* As red. */
  float blue;   /* As red. */
} halvora_text;

/* A message over the panel or the wizard, with one button. */
typedef struct halvora_alert {
  size_t size;         /* sizeof(halvora_alert). */
  const char* title;   /* What has happened. */
  const char* message; /* What that means, and what to do. */
  const char* button;  /* The button's title. */
} halvora_alert;

/* Shows the panel, and keeps it up to date from then on; once. */
HALVORA_C_PUBLIC int halvora_panel_open(halvora_phone* phone);
/* Takes it down, its wizard with it; nothing where it is not open. */
HALVORA_C_PUBLIC int halvora_panel_close(halvora_phone* phone);
/* HALVORA_NONE for a part that was taken out, and for a wizard that is not open. */
HALVORA_C_PUBLIC int halvora_part_text(halvora_phone* phone, int part, halvora_text* text);
/* Presses a button; one that is hidden or not enabled is HALVORA_NONE. */
HALVORA_C_PUBLIC int halvora_part_press(halvora_phone* phone, int part);
/* What lies over the panel or the wizard; HALVORA_NONE for nothing. */
HALVORA_C_PUBLIC int halvora_alert_look(halvora_phone* phone, halvora_alert* alert);
/* Presses its button, which takes it away; HALVORA_NONE where nothing lies there. */
HALVORA_C_PUBLIC int halvora_alert_press(halvora_phone* phone);
/* Whether the seat's tables are ready: 0 no word of them, 1 not yet, 2 ready. */
HALVORA_C_PUBLIC int halvora_panel_tables(halvora_phone* phone, int* state);

/* Sets 1 while the wizard is over the panel, else 0. */
HALVORA_C_PUBLIC int halvora_wizard_is_open(halvora_phone* phone, int* is_open);
/* How many rows the picker has in this step, and which is chosen; row 0 stands for no choice. */
HALVORA_C_PUBLIC int halvora_wizard_rows(halvora_phone* phone, size_t* count, size_t* selected);
/* A row's title; HALVORA_NONE beyond the last. */
HALVORA_C_PUBLIC int halvora_wizard_row(halvora_phone* phone, size_t row, const char** title);
/* Chooses a row, as a picker that has come to rest; HALVORA_NONE beyond the last, and where a plan
 * stands in the picker's place. */
HALVORA_C_PUBLIC int halvora_wizard_select(halvora_phone* phone, size_t row);
/* Sets 1 while a place is to be picked on a plan, else 0. */
HALVORA_C_PUBLIC int halvora_wizard_is_standing(halvora_phone* phone, int* is_standing);
/* The finger on the plan, each 0 to 1, from the left and from the stage; the nearest place is
 * chosen. HALVORA_NONE while there is no plan. */
HALVORA_C_PUBLIC int halvora_wizard_stand(halvora_phone* phone, double x, double y);

#ifdef __cplusplus
}
#endif

#endif
