#pragma once

#include <microhttpd.h>

#include "model/element/LazyLibrary.h"

namespace ZVSmartModel::Tool {

/// The HTTP server.
inline constinit const LazyLibrary httpLibrary("libmicrohttpd.so.12");

ZVG_LAZY_FUNCTION(httpLibrary, MHD_add_response_header);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_create_response_from_buffer);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_create_response_from_fd_at_offset64);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_destroy_response);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_get_daemon_info);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_lookup_connection_value);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_queue_response);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_set_connection_option);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_start_daemon);
ZVG_LAZY_FUNCTION(httpLibrary, MHD_stop_daemon);

}  // namespace ZVSmartModel::Tool
