#include "engine/inventory/packed_files.h"

namespace dunmere {
namespace {

constexpr std::uint64_t kBlockBytes = 512;

// Seven bits a byte, lowest first; the high bit says that more follow.
void appendNumber(std::string& packed, std::uint64_t number) {
  for (; number >= 0x80; number >>= 7) packed += static_cast<char>(number | 0x80);
  packed += static_cast<char>(number);
}

std::uint64_t takeNumber(const char*& position) {
  std::uint64_t number = 0;
  for (unsigned shift = 0;; shift += 7) {
    const auto byte = static_cast<unsigned char>(*position++);
    number |= std::uint64_t{byte & 0x7fU} << shift;
    if (byte < 0x80) return number;
  }
}

// The lowest bit tells blocks (0) from bytes (1).
std::uint64_t sizeCode(std::int64_t bytes) {
  const auto size = static_cast<std::uint64_t>(bytes);
  return size % kBlockBytes == 0 ? size / kBlockBytes << 1 : size << 1 | 1;
}

std::int64_t sizeOf(std::uint64_t code) {
  return static_cast<std::int64_t>((code & 1) == 0 ? (code >> 1) * kBlockBytes : code >> 1);
}

}  // namespace

void appendPackedFile(std::string& packed, std::string_view name, std::int64_t bytes) {
  appendNumber(packed, name.size());
  appendNumber(packed, sizeCode(bytes));
  packed += name;
}

PackedFile takePackedFile(const char*& position) {
  const std::uint64_t length = takeNumber(position);
  const std::int64_t bytes = sizeOf(takeNumber(position));
  const std::string_view name(position, length);
  position += length;
  return {name, bytes};
}

}  // namespace dunmere
