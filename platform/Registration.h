#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace quillo {

// Something that was registered and ends with this object: an observer, a monitor, a claim on a name.
class Registration {
 public:
  explicit Registration(std::function<void()> end) : m_end(std::move(end)) {}
  ~Registration() {
    if (m_end) m_end();
  }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

 private:
  std::function<void()> m_end;
};

}  // namespace quillo
