#include "workbench/error_reporter.h"

#include "host/automation_error.h"

namespace workbench {

void ErrorReporter::Raise(std::int32_t number, std::string_view source, std::string_view description,
                          std::optional<std::string_view> help_file,
                          std::optional<std::int32_t> help_context) {
  {
    const std::lock_guard lock(mutex_);
    if (!silenced_.contains(std::this_thread::get_id())) {
      if (recorded_.size() == kKept) recorded_.pop_front();
      recorded_.push_back(
          {std::chrono::system_clock::now(), number, std::string(source), std::string(description)});
    }
  }
  throw host::AutomationError(number, std::string(source), std::string(description),
                              std::string(help_file.value_or("")), help_context.value_or(0));
}

bool ErrorReporter::ReportingEnabled() {
  const std::lock_guard lock(mutex_);
  return !silenced_.contains(std::this_thread::get_id());
}

void ErrorReporter::ReportingEnabled(bool enabled) {
  const std::lock_guard lock(mutex_);
  if (enabled) {
    silenced_.erase(std::this_thread::get_id());
  } else {
    silenced_.insert(std::this_thread::get_id());
  }
}

std::vector<RecordedError> ErrorReporter::Recorded() const {
  const std::lock_guard lock(mutex_);
  return {recorded_.begin(), recorded_.end()};
}

void ErrorReporter::Forget() {
  const std::lock_guard lock(mutex_);
  recorded_.clear();
}

}  // namespace workbench
