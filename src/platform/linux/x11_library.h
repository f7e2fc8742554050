// The X11 libraries, loaded when the first window is wanted: a machine without a display needs none of them.
#pragma once

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include "base/status.h"

namespace tavra::platform {

// The functions used, by their own names.
// clang-format off
#define TAVRA_XCB_FUNCTIONS(USE) \
    USE(xcb_connect) USE(xcb_connection_has_error) USE(xcb_disconnect) USE(xcb_get_setup) \
    USE(xcb_setup_roots_iterator) USE(xcb_screen_next) USE(xcb_get_file_descriptor) \
    USE(xcb_poll_for_event) USE(xcb_flush) USE(xcb_generate_id) USE(xcb_request_check) \
    USE(xcb_create_window_checked) USE(xcb_destroy_window) USE(xcb_map_window) USE(xcb_unmap_window) \
    USE(xcb_configure_window) USE(xcb_change_window_attributes) USE(xcb_change_window_attributes_checked) USE(xcb_change_property) \
    USE(xcb_get_property) USE(xcb_get_property_reply) USE(xcb_get_property_value) \
    USE(xcb_get_property_value_length) USE(xcb_intern_atom) USE(xcb_intern_atom_reply) \
    USE(xcb_create_gc) USE(xcb_put_image) USE(xcb_get_maximum_request_length) \
    USE(xcb_translate_coordinates) USE(xcb_translate_coordinates_reply) USE(xcb_get_input_focus) \
    USE(xcb_get_input_focus_reply) USE(xcb_set_input_focus) USE(xcb_get_geometry) USE(xcb_get_geometry_reply) \
    USE(xcb_send_event) USE(xcb_create_pixmap) USE(xcb_free_pixmap) USE(xcb_create_cursor) \
    USE(xcb_free_gc) USE(xcb_get_keyboard_mapping) USE(xcb_get_keyboard_mapping_reply) \
    USE(xcb_get_keyboard_mapping_keysyms) USE(xcb_get_extension_data)

#define TAVRA_XCB_SHM_FUNCTIONS(USE) \
    USE(xcb_shm_query_version) USE(xcb_shm_query_version_reply) USE(xcb_shm_attach_checked) \
    USE(xcb_shm_detach) USE(xcb_shm_put_image)
// clang-format on

struct X11Library {
// A declared name takes no parentheses.
#define TAVRA_MEMBER(name) decltype(&::name) name = nullptr;  // NOLINT(bugprone-macro-parentheses)
    TAVRA_XCB_FUNCTIONS(TAVRA_MEMBER)
    TAVRA_XCB_SHM_FUNCTIONS(TAVRA_MEMBER)
#undef TAVRA_MEMBER
    xcb_extension_t* shmId = nullptr;  // by which a server is asked whether it has the extension
    bool hasShm = false;
};

// Kept until the process ends. 126: they are not installed; 127: they lack an operation.
Status loadX11(const X11Library*& library);

// A connection to the server that the environment names, which may be broken from the beginning. One thread
// at a time connects: the library below keeps the name of a file in one place for all.
xcb_connection_t* connectX11(const X11Library& library, int* screen);

}  // namespace tavra::platform
