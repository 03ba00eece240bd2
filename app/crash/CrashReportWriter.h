#pragma once

#include <ctime>
#include <string_view>

namespace quillo {

// Writes texts and numbers to a descriptor with nothing but write(2): no allocation, no lock, no locale, so that it
// works in a signal handler. Failures are ignored; with the descriptor -1 nothing is written. Does not own it.
class CrashReportWriter {
 public:
  explicit CrashReportWriter(int descriptor) : m_descriptor(descriptor) {}

  const CrashReportWriter& text(std::string_view text) const;
  const CrashReportWriter& number(long long number) const;
  const CrashReportWriter& address(const void* address) const;
  // As ISO 8601 in UTC.
  const CrashReportWriter& time(std::time_t time) const;

 private:
  const CrashReportWriter& padded(unsigned value, int width) const;

  int m_descriptor;
};

}  // namespace quillo
