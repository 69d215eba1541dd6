#include "com/text.h"

#include <new>

namespace com {

std::wstring Wide(std::string_view text) {
  if (text.empty()) return {};
  const int bytes = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), bytes, nullptr, 0);
  std::wstring wide;
  if (length > 0) {
    wide.resize(static_cast<std::size_t>(length));
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), bytes, wide.data(), length);
  } else {
    for (const char byte : text) wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
  }
  return wide;
}

std::string Narrow(std::wstring_view text) {
  if (text.empty()) return {};
  const int units = static_cast<int>(text.size());
  const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), units, narrow.data(), length, nullptr, nullptr);
  return narrow;
}

BSTR NewBstr(std::string_view text) {
  const std::wstring wide = Wide(text);
  BSTR bstr = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  if (bstr == nullptr) throw std::bad_alloc();
  return bstr;
}

Bstr::Bstr(std::wstring_view text) : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
  if (text_ == nullptr) throw std::bad_alloc();
}

}  // namespace com
