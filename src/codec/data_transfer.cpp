// data_transfer.cpp - the exported codec class CDataTransfer: settings, the shared result
// buffer, and thin members over the stream encoder and decoder.
//
// Copies and assignments share the result buffer, as callers of this class have always relied
// on; the buffer lives in a small counted holder so that it is released once, by the last object
// holding it.  This is the one place the class parts from its long-standing behaviour (a bare
// shared pointer, freed by every holder, and an assignment that leaked its target's buffer).
// Growth happens in the holder, so every sharer sees the grown buffer.
#include <atomic>
#include <cstdlib>
#include <new>

#include "codec/coordinate_frame.h"
#include "codec/stream_decoder.h"
#include "codec/stream_encoder.h"
#include "codec/stream_format.h"
#include "codec/varint_code.h"
#include "core/blob.h"
#include "core/boundary.h"
#include "xggeokit.h"

using namespace xg;

// The result buffer with its capacity and the number of objects holding it.  Memory comes from
// malloc and nothing here throws.
struct CDataTransfer::Buffer {
  unsigned char* data;
  int32_t capacity;
  std::atomic<int32_t> holders;

  // A holder with a buffer of `capacity` bytes (no buffer when that allocation fails); null
  // when even the holder cannot be had.
  static Buffer* make(int32_t capacity) noexcept {
    Buffer* b = new (std::nothrow) Buffer{nullptr, 0, {1}};
    if (b == nullptr) return nullptr;
    b->data = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(capacity)));
    if (b->data != nullptr) b->capacity = capacity;
    return b;
  }
  static Buffer* share(Buffer* b) noexcept {
    if (b != nullptr) b->holders.fetch_add(1, std::memory_order_relaxed);
    return b;
  }
  static void release(Buffer* b) noexcept {
    if (b == nullptr || b->holders.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    std::free(b->data);
    delete b;
  }
};

namespace {

constexpr int32_t kInitialCapacity = 2048;
constexpr double kDefaultScale = 100.0;

}  // namespace

CDataTransfer::CDataTransfer()
    : m_buffer(Buffer::make(kInitialCapacity)),
      m_resultSize(0),
      m_unused(0),
      m_codeX{},
      m_codeY{},
      m_codeXSize(0),
      m_codeYSize(0) {
  SetCoordinateInf(0, 0, kDefaultScale);
}

CDataTransfer::~CDataTransfer() { Buffer::release(m_buffer); }

CDataTransfer::CDataTransfer(const CDataTransfer& other)
    : m_buffer(Buffer::share(other.m_buffer)),
      m_resultSize(other.m_resultSize),
      m_unused(other.m_unused),
      m_originX(other.m_originX),
      m_originY(other.m_originY),
      m_scale(other.m_scale),
      m_upperX(other.m_upperX),
      m_upperY(other.m_upperY),
      m_codeXSize(other.m_codeXSize),
      m_codeYSize(other.m_codeYSize) {
  std::memcpy(m_codeX, other.m_codeX, sizeof m_codeX);
  std::memcpy(m_codeY, other.m_codeY, sizeof m_codeY);
}

CDataTransfer& CDataTransfer::operator=(const CDataTransfer& other) {
  Buffer* taken = Buffer::share(other.m_buffer);  // first, so that self-assignment keeps it
  Buffer::release(m_buffer);
  m_buffer = taken;
  m_resultSize = other.m_resultSize;
  m_unused = other.m_unused;
  m_originX = other.m_originX;
  m_originY = other.m_originY;
  m_scale = other.m_scale;
  m_upperX = other.m_upperX;
  m_upperY = other.m_upperY;
  std::memcpy(m_codeX, other.m_codeX, sizeof m_codeX);
  std::memcpy(m_codeY, other.m_codeY, sizeof m_codeY);
  m_codeXSize = other.m_codeXSize;
  m_codeYSize = other.m_codeYSize;
  return *this;
}

void CDataTransfer::SetCoordinateInf(double origin_x, double origin_y, double scale) {
  m_originX = origin_x;
  m_originY = origin_y;
  m_scale = scale;
  int32_t top = codec::kMaxUnit;
  Int2Double(top, top, m_upperX, m_upperY);
}

void CDataTransfer::GetCoordinateInf(_xgWKB_BOX* box, double* scale) {
  if (box != nullptr) *box = _xgWKB_BOX{m_originX, m_originY, m_upperX, m_upperY};
  if (scale != nullptr) *scale = m_scale;
}

int32_t CDataTransfer::Double2Long(double& x, double& y, int32_t& ix, int32_t& iy) {
  const codec::Frame frame{m_originX, m_originY, m_scale, m_upperX, m_upperY};
  if (!frame.contains(x, y)) return XGWKB_E_CODEC_RANGE;
  Double2Int(x, y, ix, iy);
  return XGWKB_OK;
}

int32_t CDataTransfer::Long2Double(int32_t& ix, int32_t& iy, double& x, double& y) {
  if (ix < 0 || iy < 0) return XGWKB_E_CODEC_RANGE;
  Int2Double(ix, iy, x, y);
  return XGWKB_OK;
}

void CDataTransfer::Double2Int(double& x, double& y, int32_t& ix, int32_t& iy) {
  ix = codec::to_unit(x, m_originX, m_scale);
  iy = codec::to_unit(y, m_originY, m_scale);
}

void CDataTransfer::Int2Double(int32_t& ix, int32_t& iy, double& x, double& y) {
  x = codec::from_unit(ix, m_originX, m_scale);
  y = codec::from_unit(iy, m_originY, m_scale);
}

void CDataTransfer::Int2CompressInt(int32_t& x, int32_t& y) {
  m_codeXSize = static_cast<uint16_t>(codec::put_code(m_codeX, x) - m_codeX);
  m_codeYSize = static_cast<uint16_t>(codec::put_code(m_codeY, y) - m_codeY);
}

int CDataTransfer::GetNextXY(const unsigned char* p, int32_t& x, int32_t& y, int32_t& used) {
  // The caller vouches for the bytes; reading stops after five bytes of either code all the same.
  int64_t vx, vy;
  const unsigned char* q = codec::get_code(p, p + codec::kMaxCodeBytes, &vx);
  if (q == nullptr) return 0;
  const unsigned char* r = codec::get_code(q, q + codec::kMaxCodeBytes, &vy);
  if (r == nullptr) return 0;
  x = static_cast<int32_t>(static_cast<uint32_t>(vx));
  y = static_cast<int32_t>(static_cast<uint32_t>(vy));
  used = static_cast<int32_t>(r - p);
  return 1;
}

void CDataTransfer::AllocSize(int32_t need) {
  if (m_buffer == nullptr && (m_buffer = Buffer::make(kInitialCapacity)) == nullptr) return;
  if (m_buffer->capacity > need) return;
  int64_t capacity = m_buffer->capacity > 0 ? m_buffer->capacity : kInitialCapacity;
  while (capacity <= need) capacity *= 2;
  if (capacity > codec::kMaxUnit) capacity = codec::kMaxUnit;
  if (capacity <= need) return;  // need is the largest int32: no capacity can exceed it
  void* grown = std::realloc(m_buffer->data, static_cast<std::size_t>(capacity));
  if (grown == nullptr) return;
  m_buffer->data = static_cast<unsigned char*>(grown);
  m_buffer->capacity = static_cast<int32_t>(capacity);
}

int32_t CDataTransfer::ConvertWkb2Compress(const unsigned char* shape) {
  return guarded([&]() -> int32_t {
    m_resultSize = 0;  // every failure leaves a result size of 0
    if (shape == nullptr) return XGWKB_E_NULL_POINTER;
    const codec::Frame frame{m_originX, m_originY, m_scale, m_upperX, m_upperY};
    int64_t need = 0;
    if (int32_t status = codec::plan_stream(shape, &need)) return status;
    if (need >= codec::kMaxUnit) return XGWKB_E_FAILED;
    AllocSize(static_cast<int32_t>(need));
    if (m_buffer == nullptr || m_buffer->capacity < need) return XGWKB_E_FAILED;
    int32_t size = 0;
    if (int32_t status = codec::write_stream(shape, frame, m_buffer->data, &size)) return status;
    m_resultSize = size;
    return XGWKB_OK;
  });
}

int32_t CDataTransfer::ConvertCompress2Wkb(const unsigned char* stream) {
  return guarded([&]() -> int32_t {
    m_resultSize = 0;
    if (stream == nullptr) return XGWKB_E_NULL_POINTER;
    // The stream's own length field is trusted here; an unknown type word is a bad type.
    if (!codec::is_stream_type(load_u32(stream + 1))) return XGWKB_E_INVALID_GEOMETRY_TYPE;
    const uint32_t length = load_u32(stream + 5);
    if (length > static_cast<uint32_t>(codec::kMaxUnit)) return XGWKB_E_CODEC_NOTHING;
    return ConvertCompress2Wkb(stream, static_cast<int32_t>(length));
  });
}

int32_t CDataTransfer::ConvertCompress2Wkb(const unsigned char* stream, int32_t available) {
  return guarded([&]() -> int32_t {
    m_resultSize = 0;
    if (stream == nullptr) return XGWKB_E_NULL_POINTER;
    if (available < 0) return XGWKB_E_CODEC_NOTHING;

    // The blob grows in this object's buffer, by AllocSize's doubling.
    struct Sink final : codec::BlobSink {
      CDataTransfer* self;
      explicit Sink(CDataTransfer* s) : self(s) { sync(); }
      void sync() {
        data = self->m_buffer != nullptr ? self->m_buffer->data : nullptr;
        capacity = self->m_buffer != nullptr ? static_cast<std::size_t>(self->m_buffer->capacity) : 0;
      }
      bool grow(std::size_t need) override {
        if (need > static_cast<std::size_t>(codec::kMaxUnit)) return false;
        self->AllocSize(static_cast<int32_t>(need));
        sync();
        return capacity >= need;
      }
    } sink(this);

    const codec::Frame frame{m_originX, m_originY, m_scale, m_upperX, m_upperY};
    int32_t size = 0;
    if (int32_t status = codec::read_stream(stream, static_cast<std::size_t>(available), frame, sink, &size)) {
      return status;
    }
    m_resultSize = size;
    return XGWKB_OK;
  });
}

int32_t CDataTransfer::GetResultSize() { return m_resultSize; }

CDataTransfer::operator unsigned char*() { return m_buffer != nullptr ? m_buffer->data : nullptr; }
