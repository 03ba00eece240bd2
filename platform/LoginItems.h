#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace quillo {

// A program that the session starts by itself.
struct LoginJob {
  QString label;  // the bundle identifier it was registered under
  bool onDemand{false};

  bool operator==(const LoginJob&) const = default;
};

// The helper program that is registered as a login item. The arguments go with it both now and at login, so that a
// home directory given on the command line is the helper's too.
struct LoginHelper {
  QString bundleIdentifier;
  QString name;
  QString comment;  // what a person is told of it beside the name
  QString icon;     // its name in the icon theme
  QString program;  // absolute path
  QStringList arguments;
};

// The session's login-item service: helpers registered by bundle identifier, and the older list of things that are
// opened at login, kept by URL. Main thread only.
class LoginItems {
 public:
  virtual ~LoginItems() = default;

  // Enabling registers the helper and starts it now; disabling takes it out and asks the running one to end, without
  // waiting. False when that could not be done; errorString() then says why.
  virtual bool setLoginItemEnabled(const QString& bundleIdentifier, bool enabled) = 0;
  [[nodiscard]] virtual QString errorString() const = 0;
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
