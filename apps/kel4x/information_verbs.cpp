// members, settings, list: verbs that need no instrument.
#include "automation/enumeration_table.h"
#include "output.h"
#include "terminal.h"
#include "verbs.h"

namespace kel4x {
namespace {

using automation::Member;

std::string Access(const Member& member) {
  if (member.access.kind == automation::Kind::kMethod) return "call";
  if (member.Readable() && member.Writable()) return "get set";
  return member.Readable() ? "get" : "set";
}

std::string TypeText(const Member& member) {
  if (member.access.type.value == automation::ValueType::kNothing) return {};
  return std::string(automation::TypeName(member.access.type));
}

void Describe(const Member& member) {
  const auto line = [](const std::string& label, std::string_view text) {
    if (!text.empty()) PrintLine(label + std::string(12 - label.size(), ' ') + std::string(text));
  };
  PrintLine(member.name);
  line("", member.doc);
  line("use", Access(member));
  line("type", TypeText(member));
  line("unit", member.unit);
  line("range", member.range);
  std::string modes;
  for (const auto& mode : automation::kEnumerators<qkel4x::KelMeasureModes>) {
    if (!member.modes.Has(static_cast<qkel4x::KelMeasureModes>(mode.value))) continue;
    modes += (modes.empty() ? "" : ", ") + std::string(mode.name);
  }
  line("modes", modes);
  for (std::size_t i = 0; i < member.Parameters().size(); ++i) {
    line("argument",
         std::string(member.arguments[i]) + ", " + std::string(automation::TypeName(member.Parameters()[i])));
  }
  line("errors", member.errors);
  line("note", member.oddities);
  if (const auto* enumeration = member.access.type.enumeration) {
    for (const auto& entry : enumeration->enumerators) {
      line("value", std::to_string(entry.value) + "  " + std::string(entry.name));
    }
  }
}

}  // namespace

ExitCode Members(const Arguments& arguments) {
  if (!arguments.words.empty()) {
    const Member& member = FindMember(arguments.words[0]);
    if (arguments.names) {
      if (const auto* enumeration = member.access.type.enumeration) {
        for (const auto& entry : enumeration->enumerators) PrintLine(entry.name);
      }
    } else if (arguments.json) {
      PrintLine(MemberJson(member));
    } else {
      Describe(member);
    }
    return kDone;
  }
  TextTable table({{"NAME", TextTable::Lean::kLeft},
                   {"USE", TextTable::Lean::kLeft},
                   {"TYPE", TextTable::Lean::kLeft},
                   {"UNIT", TextTable::Lean::kLeft},
                   {"WHAT IT IS", TextTable::Lean::kLeft}});
  for (const Member& member : automation::kDriverClass.members) {
    if (member.hidden && !arguments.all) continue;
    if (arguments.names) {
      PrintLine(member.name);
    } else if (arguments.json) {
      PrintLine(MemberJson(member));
    } else {
      table.Add({std::string(member.name), Access(member), TypeText(member), std::string(member.unit),
                 std::string(member.doc)});
    }
  }
  if (arguments.names || arguments.json) return kDone;
  const bool on_terminal = terminal::IsInteractive(terminal::Stream::kOutput);
  terminal::WriteOutput(table.Text(on_terminal ? static_cast<std::size_t>(terminal::Width()) : 0,
                                   terminal::WantsColour(terminal::Stream::kOutput)));
  return kDone;
}

ExitCode Settings(Run& run) {
  const Arguments& arguments = run.arguments;
  const std::string wanted = arguments.words.empty() ? std::string() : arguments.words[0];
  const auto equals = wanted.find('=');
  run.session.all_serial_ports = true;
  Session session(run.session);
  if (equals != std::string::npos) {
    const std::string name = wanted.substr(0, equals);
    const std::string value = wanted.substr(equals + 1);
    const auto failure =
        session.Attempt([&] { session.Driver().Settings()->Item(name)->SetValue(value, -1, -1); });
    if (failure) throw UsageError("setting " + name + ": " + failure->description);
    const std::filesystem::path path =
        arguments.config ? std::filesystem::path(*arguments.config) : DefaultConfigurationPath();
    StoreSetting(path, name, value);
    Complain(name + " = " + value + " stored in " + path.string());
    return kDone;
  }

  TextTable table({{"SETTING", TextTable::Lean::kLeft},
                   {"VALUE", TextTable::Lean::kLeft},
                   {"CHOICES", TextTable::Lean::kLeft}});
  bool found = false;
  for (const auto& [name, value] : session.Settings()) {
    if (!wanted.empty() && !(name == wanted || name.starts_with(wanted + "."))) continue;
    found = true;
    const auto node = session.Driver().Settings()->Item(name);
    const std::string choices = node->ReadOnly() ? "read-only" : node->OptionList();
    if (arguments.json) {
      PrintLine(TextsJson({{"name", name}, {"value", value}, {"choices", choices}}));
    } else if (name == wanted) {
      PrintLine(value);
      return kDone;
    } else {
      table.Add({name, value, choices});
    }
  }
  if (!found) {
    throw UsageError("there is no setting \"" + wanted + "\"; kel4x settings lists them");
  }
  if (!arguments.json) {
    terminal::WriteOutput(table.Text(0, terminal::WantsColour(terminal::Stream::kOutput)));
  }
  return kDone;
}

ExitCode List(Run& run) {
  TextTable table({{"RESOURCE", TextTable::Lean::kLeft}, {"WHAT IT IS", TextTable::Lean::kLeft}});
  const auto add = [&](const std::string& kind, const std::string& name, const std::string& resource,
                       const std::string& what) {
    if (run.arguments.json) {
      PrintLine(TextsJson({{"kind", kind}, {"name", name}, {"resource", resource}}));
    } else {
      table.Add({resource, what});
    }
  };
  for (const auto& [name, resource] : run.file.instruments) {
    add("instrument", name, resource, "instrument \"" + name + "\" of " + run.file.path.string());
  }
  for (const std::string& device : terminal::SerialDevices()) {
    add("serial", device,
        device.starts_with('/') ? "ASRL::" + device + "::INSTR" : "ASRL" + device.substr(3) + "::INSTR",
        "serial port " + device);
  }
  for (const std::string& device : terminal::GpibDevices()) {
    add("gpib", device, "GPIB0::6::INSTR", "GPIB through " + device + " (address as set at the instrument)");
  }
  add("simulated", "SIM", "SIM", "the embedded simulated instrument");
  if (!run.arguments.json) {
    terminal::WriteOutput(table.Text(0, terminal::WantsColour(terminal::Stream::kOutput)));
  }
  return kDone;
}

}  // namespace kel4x
