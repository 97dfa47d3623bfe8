// xggeo_json_scan.cpp - the validating JSON pass (see xggeo_json_scan.h).
#include "xggeo_json_scan.h"

namespace xggeo {
namespace {

constexpr int kMaxDepth = 512;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool is_hex(char c) { return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

class Scanner {
 public:
  Scanner(std::string_view text, JsonScan& out) : t_(text), out_(out) {}

  void run() {
    blanks();
    if (!value(0, Role::kTop)) return;
    blanks();
    if (at_ != t_.size()) fail(at_);
  }

 private:
  // What the value being read is to the GeoJSON reader.
  enum class Role { kTop, kGeometry, kFeatures, kOther };

  bool fail(std::size_t at) {
    out_.error = at;
    return false;
  }
  bool is(char c) const { return at_ < t_.size() && t_[at_] == c; }
  void blanks() {
    while (is(' ') || is('\t') || is('\n') || is('\r')) ++at_;
  }

  bool value(int depth, Role role) {
    if (at_ >= t_.size()) return fail(at_);
    switch (t_[at_]) {
      case '{':
        return object(depth + 1, role);
      case '[':
        return array(depth + 1, role);
      case '"':
        return string(nullptr);
      case 't':
        return word("true");
      case 'f':
        return word("false");
      case 'n':
        return word("null");
      default:
        return number();
    }
  }

  bool object(int depth, Role role) {
    if (depth > kMaxDepth) return fail(at_);
    JsonObjectPlaces* places = role == Role::kTop ? &out_.top : role == Role::kGeometry ? &out_.geometry : nullptr;
    ++at_;
    blanks();
    if (is('}')) return close(places);
    for (;;) {
      if (!is('"')) return fail(at_);
      std::string_view key;
      if (!string(&key)) return false;
      blanks();
      if (!is(':')) return fail(at_);
      ++at_;
      blanks();
      Role child = Role::kOther;
      if (places != nullptr) {
        std::size_t* slot = key == "type"          ? &places->type
                            : key == "coordinates" ? &places->coordinates
                            : key == "geometry"    ? &places->geometry
                            : key == "features"    ? &places->features
                                                   : nullptr;
        const bool first = slot != nullptr && *slot == kNoOffset;
        if (first) *slot = at_;
        if (first && role == Role::kTop && key == "geometry") child = Role::kGeometry;
        if (first && role == Role::kTop && key == "features") child = Role::kFeatures;
      }
      if (!value(depth, child)) return false;
      blanks();
      if (is('}')) return close(places);
      if (!is(',')) return fail(at_);
      ++at_;
      blanks();
    }
  }

  bool close(JsonObjectPlaces* places) {
    if (places != nullptr) places->end = at_;
    ++at_;
    return true;
  }

  bool array(int depth, Role role) {
    if (depth > kMaxDepth) return fail(at_);
    ++at_;
    blanks();
    if (is(']')) {
      ++at_;
      return true;
    }
    for (;;) {
      const std::size_t begin = at_;
      if (!value(depth, Role::kOther)) return false;
      if (role == Role::kFeatures) out_.feature_spans.emplace_back(begin, at_);
      blanks();
      if (is(']')) {
        ++at_;
        return true;
      }
      if (!is(',')) return fail(at_);
      ++at_;
      blanks();
    }
  }

  // A string at the opening quote; *content (when not null) gets the characters between the
  // quotes as written.
  bool string(std::string_view* content) {
    const std::size_t begin = ++at_;
    for (;;) {
      if (at_ >= t_.size()) return fail(at_);
      const char c = t_[at_];
      if (c == '"') break;
      if (static_cast<unsigned char>(c) < 0x20) return fail(at_);
      if (c != '\\') {
        ++at_;
        continue;
      }
      ++at_;
      if (at_ >= t_.size()) return fail(at_);
      const char e = t_[at_];
      if (e == 'u') {
        for (int k = 0; k < 4; ++k) {
          if (++at_ >= t_.size() || !is_hex(t_[at_])) return fail(at_);
        }
        ++at_;
      } else if (e == '"' || e == '\\' || e == '/' || e == 'b' || e == 'f' || e == 'n' || e == 'r' || e == 't') {
        ++at_;
      } else {
        return fail(at_);
      }
    }
    if (content != nullptr) *content = t_.substr(begin, at_ - begin);
    ++at_;
    return true;
  }

  bool word(const char* w) {
    for (; *w != '\0'; ++w, ++at_) {
      if (!is(*w)) return fail(at_);
    }
    return true;
  }

  bool digits() {
    if (at_ >= t_.size() || !is_digit(t_[at_])) return fail(at_);
    while (at_ < t_.size() && is_digit(t_[at_])) ++at_;
    return true;
  }

  // -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?
  bool number() {
    if (is('-')) ++at_;
    if (is('0')) {
      ++at_;
    } else if (!digits()) {
      return false;
    }
    if (is('.')) {
      ++at_;
      if (!digits()) return false;
    }
    if (is('e') || is('E')) {
      ++at_;
      if (is('+') || is('-')) ++at_;
      if (!digits()) return false;
    }
    return true;
  }

  std::string_view t_;
  JsonScan& out_;
  std::size_t at_ = 0;
};

}  // namespace

JsonScan scan_json(std::string_view text) {
  JsonScan out;
  Scanner(text, out).run();
  return out;
}

}  // namespace xggeo
