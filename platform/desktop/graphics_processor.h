// hasGraphicsProcessor: whether this machine has more to paint with than its processor.
#pragma once

#include <string>

namespace dunmere {

/// Looks for the devices that graphics drivers offer to programs, in the folder `devices`. Where there is none OpenGL
/// is emulated: a window takes twice as long to appear and three times the processor time for every frame that Qt's own
/// painting takes, which a sweep then lacks. Any thread.
bool hasGraphicsProcessor(const std::string& devices = "/dev");

}  // namespace dunmere
