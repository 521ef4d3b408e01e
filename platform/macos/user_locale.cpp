#include "platform/macos/user_locale.h"

#include "platform/macos/objective_c.h"

namespace dunmere {

std::string collationLocale() {
  const objective_c::AutoreleasePool pool;
  const id locale = objective_c::send(objective_c::classNamed("NSLocale"), "currentLocale");
  const std::string name = objective_c::textOf(objective_c::send(locale, "collatorIdentifier"));
  return name.empty() ? "C" : name;
}

}  // namespace dunmere
