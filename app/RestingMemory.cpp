#include "app/RestingMemory.h"

#include "config/Keys.h"
#include "foundation/NotificationCenter.h"

#include <malloc.h>

#include <chrono>
#include <utility>

namespace quillo {

namespace {

constexpr std::chrono::seconds pauseBetweenEntries{60};

}  // namespace

RestingMemory::RestingMemory(NotificationCenter& local, std::function<bool()> isInUse, std::function<void()> forget) {
  m_rest.setSingleShot(true);
  m_rest.setTimerType(Qt::VeryCoarseTimer);
  m_rest.setInterval(pauseBetweenEntries);
  QObject::connect(&m_rest, &QTimer::timeout, [isInUse = std::move(isInUse), forget = std::move(forget)] {
    if (isInUse()) return;
    forget();
    // What was freed in between what is still used goes back to the system only when it is told.
    ::malloc_trim(0);
  });
  m_observation = local.observe(Notice::windowWillClose, [this](const Notification&) { m_rest.start(); });
}

}  // namespace quillo
