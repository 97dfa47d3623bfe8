// reserved.cpp - entry points kept for callers built against them.
//
// Each accepts and ignores whatever arguments a caller passes (the calling convention lets a
// function taking none be called with any), does nothing and returns 0.
#include "xggeokit.h"

extern "C" {

int32_t xgWKB_shape_change_path(void) noexcept { return 0; }
int32_t xgWKB_shape_delete_path(void) noexcept { return 0; }
int32_t xgWKB_shape_replace_path_with_arc(void) noexcept { return 0; }
int32_t xgWKB_shape_delete_point(void) noexcept { return 0; }
int32_t xgWKB_shape_move_point(void) noexcept { return 0; }
int32_t xgWKB_shape_extend_line(void) noexcept { return 0; }

}  // extern "C"
