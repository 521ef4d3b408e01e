#include "platform/icu/icu_name_order.h"

#include <unicode/ucol.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace dunmere {
namespace {

[[noreturn]] void fail(const char* what, UErrorCode code) {
  throw std::runtime_error(std::string(what) + ": " + u_errorName(code));
}

/// ICU calls the C locale "en_US_POSIX" and orders it by bytes, which is no order for people.
bool isPosix(std::string_view locale) {
  const std::string_view name = locale.substr(0, locale.find_first_of(".@"));
  return name.empty() || name == "C" || name == "POSIX" || name == "en_US_POSIX";
}

std::string icuLocale(const std::string& locale) {
  if (isPosix(locale)) return "";
  char canonical[ULOC_FULLNAME_CAPACITY];
  UErrorCode code = U_ZERO_ERROR;
  uloc_canonicalize(locale.c_str(), canonical, sizeof canonical, &code);
  return U_SUCCESS(code) && code != U_STRING_NOT_TERMINATED_WARNING ? canonical : "";
}

/// A buffer of `size` elements, on the stack when `usual` is enough, as for nearly every name.
template <typename Element, std::size_t usual>
class SmallBuffer {
 public:
  explicit SmallBuffer(std::size_t size) {
    if (size > usual) large_.resize(size);
  }
  Element* data() { return large_.empty() ? small_.data() : large_.data(); }

 private:
  std::array<Element, usual> small_;
  std::vector<Element> large_;
};

constexpr std::size_t kUsualName = 255;  // bytes: the longest name of nearly all file systems

/// The decoded name; never more units than the name has bytes.
class Utf16Text {
 public:
  explicit Utf16Text(std::string_view utf8) : units_(utf8.size()) {
    constexpr UChar32 kReplacement = 0xFFFD;
    UErrorCode code = U_ZERO_ERROR;
    int32_t replaced = 0;
    const auto size = static_cast<int32_t>(utf8.size());
    u_strFromUTF8WithSub(units_.data(), size, &length_, utf8.data(), size, kReplacement, &replaced, &code);
    if (U_FAILURE(code)) fail("A name could not be decoded", code);
    wasValid_ = replaced == 0;
  }

  const char16_t* units() { return units_.data(); }
  int32_t length() const { return length_; }
  bool wasValid() const { return wasValid_; }

 private:
  SmallBuffer<char16_t, kUsualName> units_;
  int32_t length_ = 0;
  bool wasValid_ = true;
};

/// ICU's key with its zero byte at the end, which is less than any byte that could follow.
std::string keyOf(const UCollator& collator, Utf16Text& text) {
  const auto write = [&](uint8_t* key, std::size_t size) {
    return static_cast<std::size_t>(
        ucol_getSortKey(&collator, text.units(), text.length(), key, static_cast<int32_t>(size)));
  };
  std::array<uint8_t, 64 + 4 * kUsualName> usual;  // seldom too small; ICU then tells the size it needs
  const std::size_t size = write(usual.data(), usual.size());
  std::string key(reinterpret_cast<const char*>(usual.data()), std::min(size, usual.size()));
  if (size > usual.size()) {
    key.resize(size);
    write(reinterpret_cast<uint8_t*>(key.data()), size);
  }
  return key;
}

}  // namespace

void IcuNameOrder::Close::operator()(UCollator* collator) const {
  ucol_close(collator);
}

IcuNameOrder::IcuNameOrder(const std::string& locale) {
  UErrorCode code = U_ZERO_ERROR;
  // ICU falls back on a default from the environment, and ICU 76 crashes when that names no locale.
  uloc_setDefault("root", &code);
  collator_.reset(ucol_open(icuLocale(locale).c_str(), &code));
  if (U_FAILURE(code)) {  // the setting names no locale: use the root order
    code = U_ZERO_ERROR;
    collator_.reset(ucol_open("", &code));
  }
  if (U_FAILURE(code)) fail("No collation data", code);
  ucol_setStrength(collator_.get(), UCOL_SECONDARY);
  // Some locales change these settings; names are ordered by the same ones everywhere.
  ucol_setAttribute(collator_.get(), UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, &code);
  ucol_setAttribute(collator_.get(), UCOL_NUMERIC_COLLATION, UCOL_OFF, &code);
  ucol_setAttribute(collator_.get(), UCOL_CASE_LEVEL, UCOL_OFF, &code);
  ucol_setAttribute(collator_.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &code);
  if (U_FAILURE(code)) fail("A collation attribute was refused", code);
}

std::string IcuNameOrder::userLocale() {
  // The order in which the C library looks, whose own answer is "C" for a locale that is not installed. ICU has the
  // data of every locale, but its own default follows the language of messages.
  for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
    const char* locale = std::getenv(variable);
    if (locale != nullptr && *locale != '\0') return locale;
  }
  return "C";
}

std::string IcuNameOrder::sortKey(std::string_view name) const {
  Utf16Text text(name);
  std::string key = keyOf(*collator_, text);
  if (!text.wasValid()) key += name;
  return key;
}

}  // namespace dunmere
