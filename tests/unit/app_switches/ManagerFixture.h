#pragma once

#include "app/switches/AgentManager.h"
#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "foundation/DistributedNotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "platform/DistributedNotifications.h"
#include "tests/support/FakeLoginItems.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {

// A bus between the processes of a test: a notice reaches all of them, the sender too, before post() returns.
class FakeBus {
 public:
  class Line : public DistributedNotifications {
   public:
    explicit Line(FakeBus& bus) : m_bus(bus) { bus.m_lines << this; }
    ~Line() override { m_bus.m_lines.removeOne(this); }
    void setReceiver(std::function<void(const QString&)> receiver) override { m_receiver = std::move(receiver); }
    bool post(const QString& name) override {
      for (Line* line : m_bus.m_lines)
        if (line->m_receiver) line->m_receiver(name);
      return true;
    }

   private:
    FakeBus& m_bus;
    std::function<void(const QString&)> m_receiver;
  };

 private:
  QList<Line*> m_lines;
};

// One process: its own reading of the shared list, its managers, and what their observers see.
class FakeProcess : public KeyValueObserver {
 private:
  FakeBus::Line m_line;

 public:
  FakeProcess(const QString& name, const QUrl& list, FakeBus& bus, LoginItemServices services, QStringList& events)
      : m_line(bus), prefs(PersistentPropertyList::withPropertyListURL(list)), m_name(name), m_events(events) {
    center.setTransport(&m_line);
    const auto source = [this] { return prefs.get(); };
    reminders = std::make_unique<RemindersManager>(source, center, [this]() -> AgentManager& { return *agent; });
    agent =
        std::make_unique<AgentManager>(source, center, services, [this]() -> RemindersManager& { return *reminders; });
    m_registrations.push_back(reminders->addObserver(*this, RemindersManager::remindersAreEnabledKeyPath));
    m_registrations.push_back(agent->addObserver(*this, AgentManager::shouldShowInMenuBarKeyPath));
  }

  void observeWillChange(const QString& key, KeyValueObservable&, const void*) override { note("will", key); }
  void observeValueForKeyPath(const QString& key, KeyValueObservable&, const void*) override { note("did", key); }

  std::unique_ptr<PersistentPropertyList> prefs;
  DistributedNotificationCenter center;
  std::unique_ptr<RemindersManager> reminders;
  std::unique_ptr<AgentManager> agent;

 private:
  void note(const char* notice, const QString& key) {
    const bool isReminders = key == RemindersManager::remindersAreEnabledKeyPath;
    const bool on = isReminders ? reminders->remindersAreEnabled() : agent->shouldShowInMenuBar();
    m_events << QStringLiteral("%1 %2 %3 %4")
                    .arg(m_name, QLatin1StringView(notice),
                         isReminders ? QStringLiteral("reminders") : QStringLiteral("agent"),
                         on ? QStringLiteral("on") : QStringLiteral("off"));
  }

  QString m_name;
  QStringList& m_events;
  std::vector<std::unique_ptr<Registration>> m_registrations;
};

class ManagerTest : public testing::Test {
 protected:
  [[nodiscard]] QUrl listURL() const { return QUrl::fromLocalFile(home.path(QStringLiteral("list.plist"))); }
  [[nodiscard]] PropertyListDictionary onDisk() const {
    return PersistentPropertyList::withPropertyListURL(listURL())->allProperties();
  }
  QStringList take() { return std::exchange(events, {}); }

  TestHome home;
  QStringList events;
  FakeBus bus;
  FakeLoginItems items{events};
  FakeRunningApplications running;
  LoginItemServices services{&items, &running};
};

}  // namespace quillo
