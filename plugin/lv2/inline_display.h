/* The inline display extension of LV2 hosts, http://harrisonconsoles.com/lv2/inlinedisplay: a small
   picture of the plugin's that the host shows in its mixer. */
#pragma once

#include <stdint.h>

#define LV2_INLINEDISPLAY_URI "http://harrisonconsoles.com/lv2/inlinedisplay"
#define LV2_INLINEDISPLAY__interface LV2_INLINEDISPLAY_URI "#interface"   /* extension data */
#define LV2_INLINEDISPLAY__queue_draw LV2_INLINEDISPLAY_URI "#queue_draw" /* feature */

/* Pixels of 32 bits, 0xAARRGGBB with colours multiplied by alpha, row by row from the top. */
typedef struct {
    unsigned char* data;
    int width;
    int height;
    int stride; /* bytes from row to row */
} LV2_Inline_Display_Image_Surface;

typedef struct {
    /* Of the host's graphics thread, also during run; instance is the plugin's. The surface is of
       the width asked for and at most as high, and stays valid until the next call. Null: no
       picture. */
    LV2_Inline_Display_Image_Surface* (*render)(void* instance, uint32_t width,
                                                uint32_t max_height);
} LV2_Inline_Display_Interface;

typedef struct {
    void* handle;
    /* Asks for a call of render; run may call it. */
    void (*queue_draw)(void* handle);
} LV2_Inline_Display;
