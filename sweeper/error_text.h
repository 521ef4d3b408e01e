// errorText: the one place where a failure becomes a sentence for people.
#pragma once

#include <string>

#include "engine/sweep_error.h"

namespace dunmere {

/// A full English sentence naming the item by its last path component as displayText shows it, with curly quotes.
/// Any thread.
std::string errorText(const SweepError& error);

}  // namespace dunmere
