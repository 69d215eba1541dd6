// Values and errors over the border.
#include <cstring>
#include <new>

#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/automation_error.h"
#include "library/border.h"

namespace border {
namespace {

char* Copy(std::string_view text) {
  return automation_block(AUTOMATION_TEXT, text.data(), text.size()).as.block.data;
}

std::string_view Seen(const char* text) { return text == nullptr ? std::string_view() : text; }

void Keep(automation_error& error, std::int32_t number, std::string_view source,
          std::string_view description) {
  error = {};
  error.number = number;
  error.source = Copy(source);
  error.description = Copy(description);
}

}  // namespace

automation_value ToC(const Value& value) {
  automation_value out{};
  struct {
    automation_value& out;
    void operator()(std::monostate) const {}
    void operator()(bool held) const {
      out.type = AUTOMATION_BOOL;
      out.as.boolean = held ? 1 : 0;
    }
    void operator()(std::int16_t held) const {
      out.type = AUTOMATION_INT16;
      out.as.int16 = held;
    }
    void operator()(std::int32_t held) const {
      out.type = AUTOMATION_INT32;
      out.as.int32 = held;
    }
    void operator()(double held) const {
      out.type = AUTOMATION_DOUBLE;
      out.as.number = held;
    }
    void operator()(qkel4x::DateTime held) const {
      out.type = AUTOMATION_DATE;
      out.as.number = held.days;
    }
    void operator()(const std::string& held) const { Block(AUTOMATION_TEXT, held.data(), held.size()); }
    void operator()(const automation::Bytes& held) const {
      Block(AUTOMATION_BYTES, held.data(), held.size());
    }
    void operator()(const automation::Statistics& held) const {
      if (held != nullptr) Object(Show(automation::Instance{&automation::kStatisticsClass, held}));
    }
    void operator()(const automation::Settings& held) const {
      if (held != nullptr) Object(Show(held));
    }
    void Block(std::int32_t type, const void* data, std::size_t size) const {
      out = automation_block(type, data, size);
      if (out.type != type) throw std::bad_alloc();
    }
    void Object(Reference object) const {
      out.type = AUTOMATION_OBJECT;
      out.as.object = object.Release();
    }
  } convert{out};
  std::visit(convert, value);
  return out;
}

Value FromC(const automation_value& value) {
  switch (value.type) {
    case AUTOMATION_NOTHING:
      return {};
    case AUTOMATION_BOOL:
      return value.as.boolean != 0;
    case AUTOMATION_INT16:
      return Value(std::in_place_type<std::int16_t>, value.as.int16);
    case AUTOMATION_INT32:
      return value.as.int32;
    case AUTOMATION_DOUBLE:
      return value.as.number;
    case AUTOMATION_DATE:
      return qkel4x::DateTime{value.as.number};
    case AUTOMATION_TEXT:
      return std::string(value.as.block.data, value.as.block.size);
    case AUTOMATION_BYTES:
      return automation::Bytes(value.as.block.data, value.as.block.data + value.as.block.size);
    case AUTOMATION_OBJECT:
      // The only objects that the driver and its host pass as arguments are nodes of a settings tree.
      return value.as.object == nullptr ? automation::Settings() : NodeOf(value.as.object);
    default:
      throw host::AutomationError(
          host::kTypeMismatch, "QKEL4x",
          qkel4x::Join("There is no automation type ", qkel4x::DecimalText(value.type)));
  }
}

void CatchInto(automation_error& error) noexcept {
  try {
    throw;
  } catch (const host::AutomationError& caught) {
    Keep(error, caught.Number(), caught.Source(), caught.Description());
    if (!caught.HelpFile().empty()) error.help_file = Copy(caught.HelpFile());
    error.help_context = caught.HelpContext();
  } catch (const std::bad_alloc&) {
    Keep(error, 7, "QKEL4x", "Out of memory");
  } catch (const std::exception& caught) {
    Keep(error, host::kInvalidProcedureCall, "QKEL4x", caught.what());
  } catch (...) {
    Keep(error, host::kInvalidProcedureCall, "QKEL4x", "Unknown failure");
  }
}

void Throw(automation_error& error) {
  host::AutomationError thrown(error.number, std::string(Seen(error.source)),
                               std::string(Seen(error.description)), std::string(Seen(error.help_file)),
                               error.help_context);
  automation_clear_error(&error);
  throw thrown;
}

}  // namespace border
