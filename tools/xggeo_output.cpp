// xggeo_output.cpp - argument conversion and result formatting shared by all operations.
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "xggeo_ops.h"
#include "xggeokit.h"

namespace xggeo {

double Args::real(std::size_t i) const {
  const std::string& s = text(i);
  char* end = nullptr;
  const double v = std::strtod(s.c_str(), &end);
  if (s.empty() || *end != '\0') {
    throw UsageError("argument " + std::to_string(i + 1) + " (" + s + ") is not a number");
  }
  return v;
}

int32_t Args::integer(std::size_t i) const {
  const std::string& s = text(i);
  int32_t v = 0;
  const auto [end, err] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (s.empty() || err != std::errc() || end != s.data() + s.size()) {
    throw UsageError("argument " + std::to_string(i + 1) + " (" + s + ") is not an integer");
  }
  return v;
}

void Output::separate() {
  if (!line_.empty()) line_ += ' ';
}

int32_t Output::shape(unsigned char* blob) {
  if (blob == nullptr) return XGWKB_OK;
  separate();
  const int32_t status = write_shape(blob, form_, line_);
  if (keep_) {
    Geom g;
    if (decode_shape(blob, &g)) kept_.push_back(std::move(g));
  }
  xgWKB_shape_free(blob);
  return status;
}

void Output::integer(long long v) {
  separate();
  line_ += std::to_string(v);
}

void Output::real(double v) {
  separate();
  char buf[64];
  const auto [end, err] = std::to_chars(buf, buf + sizeof buf, v);
  line_.append(buf, err == std::errc() ? static_cast<std::size_t>(end - buf) : 0);
}

void Output::text(std::string_view s) {
  separate();
  line_ += s;
}

}  // namespace xggeo
