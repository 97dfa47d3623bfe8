// wkt_keywords.cpp - keyword table, empty texts and the opening parentheses.
#include "wkt/wkt_keywords.h"

#include <cstring>

#include "xggeokit.h"

namespace xg {
namespace {

struct Keyword {
  const char* word;
  uint32_t code;
};

// The annotation and dimension words are known by name although no text of theirs is read.
constexpr Keyword kKeywords[] = {
    {"point", XGWKB_TYPE_POINT},
    {"multipoint", XGWKB_TYPE_MULTIPOINT},
    {"linestring", XGWKB_TYPE_LINESTRING},
    {"multilinestring", XGWKB_TYPE_MULTILINESTRING},
    {"polygon", XGWKB_TYPE_POLYGON},
    {"multipolygon", XGWKB_TYPE_MULTIPOLYGON},
    {"SingleText", XGWKB_TYPE_SINGLETEXT},
    {"MultiText", XGWKB_TYPE_MULTITEXT},
    {"HoriDim", XGWKB_TYPE_HORIDIM},
    {"VertDim", XGWKB_TYPE_VERTDIM},
    {"AlignedDim", XGWKB_TYPE_ALIGNEDDIM},
};

constexpr const char* kEmptyTexts[] = {
    "point empty",      "linestring empty",      "polygon empty",
    "multipoint empty", "multilinestring empty", "multipolygon empty",
};

constexpr std::size_t kMaxKeywordLength = 127;

}  // namespace

uint32_t wkt_keyword_code(const char* text) {
  std::size_t len = 0;
  while (text[len] != '\0' && text[len] != ' ' && text[len] != '(') {
    if (++len > kMaxKeywordLength) return 0;
  }
  for (const Keyword& k : kKeywords) {
    if (std::strlen(k.word) == len && std::memcmp(k.word, text, len) == 0) return k.code;
  }
  return 0;
}

bool is_wkt_empty_text(const char* text) {
  for (const char* empty : kEmptyTexts) {
    if (std::strcmp(text, empty) == 0) return true;
  }
  return false;
}

const char* skip_opening_parens(const char* text, int more) {
  const char* p = std::strchr(text, '(');  // stops at the terminating zero
  if (p == nullptr) return nullptr;
  ++p;
  for (int i = 0; i < more; ++i, ++p) {
    if (*p != '(') return nullptr;
  }
  return p;
}

}  // namespace xg
