// IcuNameOrder: the order of names in the user's locale, by ICU.
#pragma once

#include <memory>
#include <string>
#include <string_view>

struct UCollator;

namespace dunmere {

/// Case-insensitive: letters before accents, case and width of letters not at all; spaces and punctuation count and
/// come before digits, digits before letters; digits are compared one by one. Thread-safe.
class IcuNameOrder {
 public:
  /// `locale` as the system names it ("sv_SE.UTF-8") or as ICU does; any other (a locale without an order, "C",
  /// nonsense, an empty name) gets ICU's root order. Throws std::runtime_error when ICU has no data at all.
  explicit IcuNameOrder(const std::string& locale);

  /// The name of the locale by which the user wants texts sorted.
  static std::string userLocale();

  /// Keys compare by bytes as the names order. In a name that is not UTF-8 each invalid part is ordered as U+FFFD;
  /// names that are then equal are ordered by their bytes.
  std::string sortKey(std::string_view name) const;

 private:
  struct Close {
    void operator()(UCollator* collator) const;
  };
  std::unique_ptr<UCollator, Close> collator_;
};

}  // namespace dunmere
