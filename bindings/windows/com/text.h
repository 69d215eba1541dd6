// Texts at the border: the component's bytes (UTF-8) and the platform's UTF-16.
#pragma once

#include <ole2.h>

#include <string>
#include <string_view>

namespace com {

/// UTF-8 as UTF-16. A text that is no UTF-8, as an instrument may send it, is taken byte by byte (Latin 1).
std::wstring Wide(std::string_view text);
std::string Narrow(std::wstring_view text);

/// The text of an automation string; null is the empty text.
inline std::string Text(BSTR text) { return Narrow({text, SysStringLen(text)}); }
/// A new automation string, which the caller frees. Throws std::bad_alloc.
BSTR NewBstr(std::string_view text);

/// An automation string that frees itself.
class Bstr {
 public:
  explicit Bstr(std::string_view text) : text_(NewBstr(text)) {}
  explicit Bstr(std::wstring_view text);
  ~Bstr() { SysFreeString(text_); }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;

  BSTR Get() const { return text_; }

 private:
  BSTR text_;
};

}  // namespace com
