#include "app/crash/CrashReportWriter.h"

#include "foundation/FileDescriptor.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>

namespace quillo {

const CrashReportWriter& CrashReportWriter::text(std::string_view text) const {
  if (m_descriptor >= 0) writeAll(m_descriptor, text);
  return *this;
}

const CrashReportWriter& CrashReportWriter::number(long long number) const {
  std::array<char, 24> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  return text({digits.data(), result.ptr});
}

const CrashReportWriter& CrashReportWriter::address(const void* address) const {
  std::array<char, 24> digits{};
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), reinterpret_cast<std::uintptr_t>(address), 16);
  return text("0x").text({digits.data(), result.ptr});
}

const CrashReportWriter& CrashReportWriter::padded(unsigned value, int width) const {
  std::array<char, 8> digits{};
  for (int place = width; place-- > 0; value /= 10) {
    digits[static_cast<std::size_t>(place)] = static_cast<char>('0' + value % 10);
  }
  return text({digits.data(), static_cast<std::size_t>(width)});
}

const CrashReportWriter& CrashReportWriter::time(std::time_t time) const {
  // gmtime() takes a lock; the civil calendar is arithmetic.
  using namespace std::chrono;
  const sys_seconds instant{seconds(time)};
  const auto day = floor<days>(instant);
  const year_month_day date(day);
  const hh_mm_ss clock(instant - day);
  number(int{date.year()}).text("-").padded(unsigned{date.month()}, 2).text("-").padded(unsigned{date.day()}, 2);
  text("T").padded(static_cast<unsigned>(clock.hours().count()), 2);
  text(":").padded(static_cast<unsigned>(clock.minutes().count()), 2);
  return text(":").padded(static_cast<unsigned>(clock.seconds().count()), 2).text("Z");
}

}  // namespace quillo
