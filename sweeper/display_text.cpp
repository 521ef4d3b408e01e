#include "sweeper/display_text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace dunmere {
namespace {

struct Decoded {
  char32_t character = 0;
  std::size_t length = 0;  ///< bytes taken
};

struct Range {
  char32_t first;
  char32_t last;
};

// Characters that show nothing themselves but change how the text around them reads, is ordered or compares.
constexpr std::array<Range, 20> kInvisible = {{
    {0x0000, 0x001F},    // controls, a newline among them
    {0x007F, 0x009F},    // delete, and more controls
    {0x00AD, 0x00AD},    // soft hyphen
    {0x034F, 0x034F},    // combining grapheme joiner
    {0x061C, 0x061C},    // Arabic letter mark
    {0x115F, 0x1160},    // Hangul fillers
    {0x17B4, 0x17B5},    // Khmer inherent vowels
    {0x180E, 0x180E},    // Mongolian vowel separator
    {0x200B, 0x200B},    // zero width space
    {0x200E, 0x200F},    // left-to-right and right-to-left mark
    {0x2028, 0x202E},    // line and paragraph separator, embeddings and overrides
    {0x2060, 0x206F},    // word joiner, invisible operators, isolates, deprecated format characters
    {0x3164, 0x3164},    // Hangul filler
    {0xFEFF, 0xFEFF},    // zero width no-break space
    {0xFFA0, 0xFFA0},    // halfwidth Hangul filler
    {0xFFF0, 0xFFFB},    // interlinear annotation
    {0x1D159, 0x1D159},  // musical null notehead
    {0x1D173, 0x1D17A},  // musical beams and slurs
    {0xE0000, 0xE00FF},  // tags
    {0xE01F0, 0xE0FFF},  // the rest of their plane's ignorable characters
}};

// Spaces that look like the space bar's, only wider or narrower.
constexpr std::array<Range, 7> kOtherSpaces = {{
    {0x00A0, 0x00A0},
    {0x1680, 0x1680},
    {0x2000, 0x200A},
    {0x202F, 0x202F},
    {0x205F, 0x205F},
    {0x2800, 0x2800},  // the braille pattern without dots
    {0x3000, 0x3000},
}};

// Blocks of letters and digits that run from right to left.
constexpr std::array<Range, 5> kRightToLeft = {{
    {0x0590, 0x08FF},
    {0xFB1D, 0xFDFF},
    {0xFE70, 0xFEFE},
    {0x10800, 0x10FFF},
    {0x1E800, 0x1EFFF},
}};

// Letters of which most names are made: none of them is in another table.
constexpr std::array<Range, 5> kPlain = {{
    {0x0020, 0x007E},
    {0x00C0, 0x033F},  // Latin
    {0x0370, 0x058F},  // Greek, Cyrillic, Armenian
    {0x3041, 0x3163},  // Japanese, Hangul
    {0x3400, 0xD7A3},  // Chinese, more of Hangul
}};

// Joiners and variation selectors belong to the characters beside them: several scripts and most emoji are spelt with
// them. Beside other characters they do nothing.
constexpr std::array<Range, 1> kJoiners = {{{0x200C, 0x200D}}};
constexpr std::array<Range, 2> kSelectors = {{{0xFE00, 0xFE0F}, {0xE0100, 0xE01EF}}};
constexpr char32_t kFirstJoined = 0x0590;    // below it stand alphabets whose letters are never joined
constexpr char32_t kFirstSelected = 0x00A0;  // of ASCII only the digits of keycaps have variants
constexpr char32_t kKeycap = 0x20E3;

template <std::size_t kCount, std::size_t kOtherCount>
consteval bool areApart(const std::array<Range, kCount>& ranges, const std::array<Range, kOtherCount>& others) {
  return std::ranges::none_of(ranges, [&](const Range& range) {
    return std::ranges::any_of(
        others, [&](const Range& other) { return range.first <= other.last && other.first <= range.last; });
  });
}
static_assert(areApart(kPlain, kInvisible) && areApart(kPlain, kOtherSpaces) && areApart(kPlain, kRightToLeft) &&
              areApart(kPlain, kJoiners) && areApart(kPlain, kSelectors));

constexpr std::string_view kReplacement = "\uFFFD";
constexpr std::string_view kOpenBox = "\u2423";
constexpr std::string_view kLeftToRightIsolate = "\u2066";
constexpr std::string_view kPopIsolate = "\u2069";

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

/// What `bytes` begin with: of length 0 when it is no valid sequence, or nothing at all.
Decoded decodeFirst(std::string_view bytes) {
  if (bytes.empty()) return {};
  const unsigned char lead = byteAt(bytes, 0);
  const std::size_t length = sequenceLength(lead);
  if (length == 0 || length > bytes.size()) return {};
  char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
  for (std::size_t index = 1; index < length; ++index) {
    const unsigned char next = byteAt(bytes, index);
    if ((next & 0xC0) != 0x80) return {};
    character = character << 6 | (next & 0x3F);
  }
  return isWellFormed(character, length) ? Decoded{character, length} : Decoded{};
}

template <std::size_t kCount>
bool isIn(const std::array<Range, kCount>& ranges, char32_t character) {
  const auto range = std::ranges::lower_bound(ranges, character, {}, &Range::last);
  return range != ranges.end() && character >= range->first;
}

/// Whether a character shows nothing where it stands. `before` and `after` are 0 at an end and beside an invalid byte.
bool isInvisible(char32_t character, char32_t before, char32_t after) {
  if (isIn(kJoiners, character)) return before < kFirstJoined || after < kFirstJoined;
  if (isIn(kSelectors, character)) return before < kFirstSelected && after != kKeycap;
  return isIn(kInvisible, character);
}

/// "[U+202E]": at least four hexadecimal digits.
std::string codeText(char32_t character) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string reversed;
  for (char32_t rest = character; rest != 0 || reversed.size() < 4; rest >>= 4) reversed += kDigits[rest & 0xF];
  return "[U+" + std::string(reversed.rbegin(), reversed.rend()) + "]";
}

/// What stands for a character that cannot be shown as it is; empty for one that can.
std::string substitute(char32_t character, char32_t before, char32_t after) {
  if (isIn(kOtherSpaces, character)) return std::string(kOpenBox);
  return isInvisible(character, before, after) ? codeText(character) : std::string();
}

struct Shown {
  std::string text;
  bool hasRightToLeft = false;
};

Shown show(std::string_view bytes) {
  Shown shown;
  shown.text.reserve(bytes.size());
  char32_t before = 0;
  for (Decoded decoded = decodeFirst(bytes); !bytes.empty();) {
    const std::string_view spelling = bytes.substr(0, std::max<std::size_t>(decoded.length, 1));
    bytes.remove_prefix(spelling.size());
    const Decoded next = decodeFirst(bytes);
    if (decoded.length == 0) {
      shown.text += kReplacement;
    } else if (isIn(kPlain, decoded.character)) {
      shown.text += spelling;
    } else {
      const std::string instead = substitute(decoded.character, before, next.character);
      shown.text += instead.empty() ? spelling : instead;
      shown.hasRightToLeft |= instead.empty() && isIn(kRightToLeft, decoded.character);
    }
    before = decoded.character;
    decoded = next;
  }
  return shown;
}

bool isOrdinary(char byte) {
  return byte >= ' ' && byte <= '~';
}

}  // namespace

std::string displayText(std::string_view name) {
  if (std::ranges::all_of(name, isOrdinary)) return std::string(name);
  Shown shown = show(name);
  if (!shown.hasRightToLeft) return std::move(shown.text);
  return std::string(kLeftToRightIsolate) + shown.text + std::string(kPopIsolate);
}

std::string displayPath(std::string_view path) {
  std::string text;
  for (std::size_t slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/')) {
    text += displayText(path.substr(0, slash)) + '/';
    path.remove_prefix(slash + 1);
  }
  return text + displayText(path);
}

}  // namespace dunmere
