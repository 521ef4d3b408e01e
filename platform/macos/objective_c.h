// Objective-C from C++: messages to the system's objects through the runtime's C interface.
#pragma once

#include <objc/message.h>
#include <objc/runtime.h>

#include <string>

// The two calls that an @autoreleasepool block becomes. Their names are part of the runtime's stable binary interface,
// though no header declares them.
extern "C" void* objc_autoreleasePoolPush(void);
extern "C" void objc_autoreleasePoolPop(void* pool);

namespace dunmere::objective_c {

/// What is autoreleased on this thread lives until the pool goes. Every use of this file's functions needs one around.
class AutoreleasePool {
 public:
  AutoreleasePool() : pool_(objc_autoreleasePoolPush()) {}
  ~AutoreleasePool() { objc_autoreleasePoolPop(pool_); }
  AutoreleasePool(const AutoreleasePool&) = delete;
  AutoreleasePool& operator=(const AutoreleasePool&) = delete;

 private:
  void* const pool_;
};

/// [receiver selector:arguments…]. The types must be exactly those of the method; nothing checks them. A message to nil
/// does nothing and gives zero.
template <typename Result = id, typename... Arguments>
Result send(id receiver, const char* selector, Arguments... arguments) {
  const auto message = reinterpret_cast<Result (*)(id, SEL, Arguments...)>(objc_msgSend);
  return message(receiver, sel_registerName(selector), arguments...);
}

/// The class as a receiver of messages; nil when the system has none of this name.
inline id classNamed(const char* name) {
  return reinterpret_cast<id>(objc_getClass(name));
}

/// An NSString. `text` is UTF-8; nil when it is not.
inline id stringOf(const std::string& text) {
  return send(classNamed("NSString"), "stringWithUTF8String:", text.c_str());
}

/// The UTF-8 text of an NSString; empty for nil.
inline std::string textOf(id string) {
  const auto* const utf8 = send<const char*>(string, "UTF8String");
  return utf8 == nullptr ? "" : utf8;
}

/// A file URL of exactly these bytes; nil when the system takes them for no path. `path` is absolute.
inline id fileUrlOf(const std::string& path) {
  // Never a folder's URL: its trailing slash would lead through a link.
  return send(classNamed("NSURL"), "fileURLWithFileSystemRepresentation:isDirectory:relativeToURL:", path.c_str(),
              static_cast<BOOL>(false), static_cast<id>(nullptr));
}

}  // namespace dunmere::objective_c
