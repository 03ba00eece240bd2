#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace quillo {

// A program that the session starts by itself.
struct LoginJob {
  QString label;  // the bundle identifier it was registered under
  bool onDemand{false};

  bool operator==(const LoginJob&) const = default;
};

// The session's login-item service: helpers registered by bundle identifier, and the older list of things that are
// opened at login, kept by URL. Main thread only.
class LoginItems {
 public:
  virtual ~LoginItems() = default;

  // Enabling registers the helper and starts it now; disabling takes it out and asks the running one to end, without
  // waiting. False when that could not be done.
  virtual bool setLoginItemEnabled(const QString& bundleIdentifier, bool enabled) = 0;
  // What is registered and would be started at the next login; empty too when that cannot be read.
  [[nodiscard]] virtual QList<LoginJob> jobDictionaries() const = 0;

  // A snapshot of the session's list in its order, without the items that lead nowhere any more. Nothing when there is
  // no list to be had.
  [[nodiscard]] virtual std::optional<QList<QUrl>> sessionLoginItems() const = 0;
  virtual bool insertSessionLoginItemAtFront(const QUrl& url) = 0;
  // Takes the first item of that URL out; false when there is none or it stays.
  virtual bool removeSessionLoginItem(const QUrl& url) = 0;
};

}  // namespace quillo
