#pragma once

#include <cairo-pdf.h>

#include "model/element/LazyLibrary.h"

namespace ZVSmartModel {

/// What writes PDF.
inline constinit const LazyLibrary cairoLibrary("libcairo.so.2");

ZVG_LAZY_FUNCTION(cairoLibrary, cairo_close_path);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_create);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_destroy);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_fill_preserve);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_identity_matrix);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_line_to);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_move_to);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_new_path);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_pdf_surface_create_for_stream);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_pdf_surface_set_metadata);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_pdf_surface_set_size);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_restore);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_rotate);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_save);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_scale);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_select_font_face);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_set_dash);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_set_fill_rule);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_set_font_size);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_set_line_cap);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_set_line_join);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_set_line_width);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_set_source_rgb);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_show_page);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_show_text);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_status);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_stroke);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_stroke_preserve);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_surface_destroy);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_surface_finish);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_surface_status);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_text_extents);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_text_path);
ZVG_LAZY_FUNCTION(cairoLibrary, cairo_translate);

}  // namespace ZVSmartModel
