// noding.h - splitting the members of a multilinestring where they meet each other.
#ifndef XGGEO_CONSTRUCT_NODING_H
#define XGGEO_CONSTRUCT_NODING_H

#include <cstdint>

#include "core/blob.h"

namespace xg {

// Splits every member of a multilinestring at the points where it crosses or touches another
// member, within tolerance t, and hands back through out a new multilinestring of the pieces:
// members in order, each member's pieces in order along it.  A meeting point within t of a
// vertex splits at that vertex; a member's own end points never split it.  Where two members
// run along each other, each is split at the other's end points that lie inside its segment.
// A member is not split where it only meets itself.  Returns 0, or -1 when memory runs out.
// May throw std::bad_alloc (callers run it guarded).
int32_t node_multiline(const byte* multiline, double t, byte** out);

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_NODING_H
