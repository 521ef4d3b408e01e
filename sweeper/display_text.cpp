#include "sweeper/display_text.h"

#include <algorithm>
#include <array>
#include <optional>

namespace dunmere {

namespace {

struct Decoded {
  char32_t character;
  std::size_t length;  ///< bytes taken
};

struct Range {
  char32_t first;
  char32_t last;
};

// Characters that show nothing themselves but change how the text around them reads or is ordered. The two joiners
// U+200C and U+200D are not among them: several scripts and most emoji are spelt with them.
constexpr std::array<Range, 12> kInvisible = {{
    {0x0080, 0x009F},    // C1 controls
    {0x00AD, 0x00AD},    // soft hyphen
    {0x061C, 0x061C},    // Arabic letter mark
    {0x180E, 0x180E},    // Mongolian vowel separator
    {0x200B, 0x200B},    // zero width space
    {0x200E, 0x200F},    // left-to-right and right-to-left mark
    {0x2028, 0x202E},    // line and paragraph separator, embeddings and overrides
    {0x2060, 0x2064},    // word joiner, invisible operators
    {0x2066, 0x206F},    // isolates, deprecated format characters
    {0xFEFF, 0xFEFF},    // zero width no-break space
    {0xFFF9, 0xFFFB},    // interlinear annotation
    {0xE0000, 0xE007F},  // tags
}};

constexpr std::string_view kReplacement = "\uFFFD";
constexpr char32_t kControlPictures = 0x2400;
constexpr char32_t kNewlinePicture = 0x2424;
constexpr char32_t kDelete = 0x7F;
constexpr char32_t kDeletePicture = 0x2421;

unsigned char byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

/// Bytes that a sequence beginning with `lead` takes; 0 when no sequence begins so.
std::size_t sequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

/// Whether a character may be spelt with so many bytes: not overlong, no surrogate, not above U+10FFFF.
bool isWellFormed(char32_t character, std::size_t length) {
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  if (character < kSmallest[length]) return false;
  return character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

/// The character that `bytes` begin with; none when they do not begin with a valid sequence.
std::optional<Decoded> decodeFirst(std::string_view bytes) {
  const unsigned char lead = byteAt(bytes, 0);
  const std::size_t length = sequenceLength(lead);
  if (length == 0 || length > bytes.size()) return std::nullopt;
  char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
  for (std::size_t index = 1; index < length; ++index) {
    const unsigned char next = byteAt(bytes, index);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    character = character << 6 | (next & 0x3F);
  }
  if (!isWellFormed(character, length)) return std::nullopt;
  return Decoded{character, length};
}

bool isInvisible(char32_t character) {
  const auto range = std::ranges::lower_bound(kInvisible, character, {}, &Range::last);
  return range != kInvisible.end() && character >= range->first;
}

/// "[U+202E]": at least four hexadecimal digits.
std::string codeText(char32_t character) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string reversed;
  for (char32_t rest = character; rest != 0 || reversed.size() < 4; rest >>= 4) reversed += kDigits[rest & 0xF];
  return "[U+" + std::string(reversed.rbegin(), reversed.rend()) + "]";
}

/// UTF-8 of a character of the control pictures block, which takes three bytes.
std::string pictureText(char32_t picture) {
  return {static_cast<char>(0xE0 | picture >> 12), static_cast<char>(0x80 | (picture >> 6 & 0x3F)),
          static_cast<char>(0x80 | (picture & 0x3F))};
}

void appendShown(std::string& text, char32_t character, std::string_view spelling) {
  if (character == '\n') {
    text += pictureText(kNewlinePicture);
  } else if (character < 0x20) {
    text += pictureText(kControlPictures + character);
  } else if (character == kDelete) {
    text += pictureText(kDeletePicture);
  } else if (isInvisible(character)) {
    text += codeText(character);
  } else {
    text += spelling;
  }
}

}  // namespace

std::string displayText(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const std::optional<Decoded> decoded = decodeFirst(bytes);
    const std::size_t taken = decoded ? decoded->length : 1;
    if (decoded) {
      appendShown(text, decoded->character, bytes.substr(0, taken));
    } else {
      text += kReplacement;
    }
    bytes.remove_prefix(taken);
  }
  return text;
}

}  // namespace dunmere
