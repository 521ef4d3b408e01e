// For tests that are no C++: prints why the first of the given features is refused, and nothing where the machine has
// all of them.
//
// usage: ask_machine FEATURE...
#include <iostream>

#include "tests/support/machine.h"

int main(int count, char** names) {
  for (int i = 1; i < count; ++i) {
    const auto feature = dunmere::test::featureNamed(names[i]);
    if (!feature) {
      std::cerr << "there is no feature " << names[i] << "\n";
      return 2;
    }
    if (const std::string refusal = dunmere::test::refusalOf(*feature); !refusal.empty()) {
      std::cout << refusal << "\n";
      return 0;
    }
  }
}
