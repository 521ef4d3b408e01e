#include "platform/icu/icu_name_order.h"

#include <unicode/ucol.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <cstdlib>
#include <stdexcept>

namespace dunmere {

namespace {

[[noreturn]] void fail(const char* what, UErrorCode code) {
  throw std::runtime_error(std::string(what) + ": " + u_errorName(code));
}

/// ICU calls the C locale "en_US_POSIX" and gives it the order of the bytes, which is no order for people.
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

struct Utf16Text {
  std::u16string units;
  bool wasValid = true;
};

Utf16Text utf16Of(std::string_view utf8) {
  constexpr UChar32 kReplacement = 0xFFFD;
  Utf16Text text{.units = std::u16string(utf8.size(), u'\0')};  // never more units than bytes
  UErrorCode code = U_ZERO_ERROR;
  int32_t length = 0;
  int32_t replaced = 0;
  u_strFromUTF8WithSub(text.units.data(), static_cast<int32_t>(text.units.size()), &length, utf8.data(),
                       static_cast<int32_t>(utf8.size()), kReplacement, &replaced, &code);
  if (U_FAILURE(code)) fail("A name could not be decoded", code);
  text.units.resize(static_cast<std::size_t>(length));
  text.wasValid = replaced == 0;
  return text;
}

}  // namespace

void IcuNameOrder::Close::operator()(UCollator* collator) const {
  ucol_close(collator);
}

IcuNameOrder::IcuNameOrder(const std::string& locale) {
  UErrorCode code = U_ZERO_ERROR;
  collator_.reset(ucol_open(icuLocale(locale).c_str(), &code));
  if (U_FAILURE(code)) {  // a setting that names no locale is no reason to have no order
    code = U_ZERO_ERROR;
    collator_.reset(ucol_open("", &code));
  }
  if (U_FAILURE(code)) fail("No collation data", code);
  ucol_setStrength(collator_.get(), UCOL_SECONDARY);
  // A locale may have settings of its own; the order of names has these in every locale.
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
  const Utf16Text text = utf16Of(name);
  const auto units = text.units.data();
  const auto length = static_cast<int32_t>(text.units.size());
  std::string key(64 + 4 * name.size(), '\0');  // seldom too small: then ICU says how much it needs
  const auto write = [&] {
    return ucol_getSortKey(collator_.get(), units, length, reinterpret_cast<uint8_t*>(key.data()),
                           static_cast<int32_t>(key.size()));
  };
  auto needed = static_cast<std::size_t>(write());
  if (needed > key.size()) {
    key.resize(needed);
    needed = static_cast<std::size_t>(write());
  }
  key.resize(needed);  // ends with ICU's zero byte, below any continuation
  if (!text.wasValid) key += name;
  return key;
}

}  // namespace dunmere
