// error_table.h - the table pairing each status code with its message.
#ifndef XGGEO_CORE_ERROR_TABLE_H
#define XGGEO_CORE_ERROR_TABLE_H

#include <cstddef>
#include <cstdint>

namespace xg {

// One code with its message, as GBK bytes and as UTF-8; both zero-terminated.
struct ErrorEntry {
  int32_t code;
  const char* gbk;
  const char* utf8;
};

// The whole table in lookup order (the first entry with a code is the one found); its length
// goes to *count.
const ErrorEntry* error_table(std::size_t* count);

}  // namespace xg

#endif  // XGGEO_CORE_ERROR_TABLE_H
