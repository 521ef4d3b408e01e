// JsonText: writes one JSON value as text that is valid whatever bytes it is given.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dunmere {

/// Appends to one string; the caller opens and closes objects and arrays in the right order. Commas set themselves.
class JsonText {
 public:
  JsonText& openObject() { return open('{'); }
  JsonText& closeObject() { return close('}'); }
  JsonText& openArray() { return open('['); }
  JsonText& closeArray() { return close(']'); }
  JsonText& key(std::string_view name);

  /// Bytes that are not UTF-8 become "\xHH" with a visible backslash.
  JsonText& text(std::string_view bytes);
  JsonText& integer(std::int64_t value);
  JsonText& seconds(double value);  ///< with microseconds
  JsonText& boolean(bool value);

  const std::string& str() const { return out_; }

 private:
  JsonText& open(char bracket);
  JsonText& close(char bracket);
  void separate();
  void appendQuoted(std::string_view bytes);

  std::string out_;
  bool needsComma_ = false;
};

}  // namespace dunmere
