// blob_check.h - structural check of a blob received from outside the library.
#ifndef XGGEO_INTEROP_BLOB_CHECK_H
#define XGGEO_INTEROP_BLOB_CHECK_H

#include <cstddef>
#include <cstdint>

#include "core/blob.h"

namespace xg {

// Checks that shape[0, len) is exactly one blob the unbounded functions can walk: a known type
// (nil, 1-6, envelope), members of the type their multi-type needs, and every count within len.
// The byte-order byte is not examined (blobs are little-endian whatever it holds).  Returns 0 or
// the status of the first fault: -202 the blob needs more than len bytes, -57 bytes are left
// over after it, -199 a type (or a member's type) this check does not know.
int32_t check_blob(const byte* shape, std::size_t len);

}  // namespace xg

#endif  // XGGEO_INTEROP_BLOB_CHECK_H
