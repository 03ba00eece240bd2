#pragma once

#include "platform/LoginItems.h"
#include "platform/RunningApplications.h"

#include <QStringList>

namespace quillo {

// The login-item service; everything that it and the processes of a test do goes, in order, into one list.
class FakeLoginItems : public LoginItems {
 public:
  explicit FakeLoginItems(QStringList& events) : m_events(events) {}

  bool setLoginItemEnabled(const QString& identifier, bool enabled) override {
    m_events << (enabled ? QStringLiteral("enable ") : QStringLiteral("disable ")) + identifier;
    return enabled ? enablingWorks : disablingWorks;
  }
  QString errorString() const override { return QStringLiteral("it was told to fail"); }
  QList<LoginJob> jobDictionaries() const override { return jobs; }
  std::optional<QList<QUrl>> sessionLoginItems() const override { return session; }
  bool insertSessionLoginItemAtFront(const QUrl& url) override {
    session->prepend(url);
    return true;
  }
  bool removeSessionLoginItem(const QUrl& url) override { return session->removeOne(url); }

  QList<LoginJob> jobs;
  std::optional<QList<QUrl>> session{QList<QUrl>()};
  bool enablingWorks{true};
  bool disablingWorks{true};

 private:
  QStringList& m_events;
};

class FakeRunningApplications : public RunningApplications {
 public:
  bool registerSelf(const QString&, std::function<void()>) override { return true; }
  QList<RunningApplication> running(const QString& identifier) const override {
    ++timesAsked;
    QList<RunningApplication> found;
    for (const auto& application : applications)
      if (application.bundleIdentifier == identifier) found << application;
    return found;
  }
  bool terminate(const RunningApplication& application) override {
    terminated << application.processIdentifier;
    return true;
  }
  qint64 currentProcessIdentifier() const override { return 1; }

  QList<RunningApplication> applications;
  QList<qint64> terminated;
  mutable int timesAsked{0};
};

}  // namespace quillo
