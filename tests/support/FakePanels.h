#pragma once

#include "entry/session/Alerts.h"
#include "entry/session/OpenPanel.h"
#include "platform/Workspace.h"

#include <QStringList>
#include <QUrl>

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <vector>

namespace quillo {

// Records what it is asked, and dismisses it at once or when told; a question that no test expects fails it.
class ScriptedAlerts : public Alerts {
 public:
  void beginSheet(const Alert& alert, QWidget* window, std::function<void(int)> answered) override {
    const int answer = runAlert(alert, window);
    dismiss = [answer, answered = std::move(answered)] { answered(answer); };
    if (!isHeld) dismiss();
  }
  int runAlert(const Alert& alert, QWidget*) override {
    seen.push_back(alert);
    if (expected-- <= 0) ADD_FAILURE() << "unexpected alert: " << alert.message.toStdString();
    return static_cast<int>(alert.buttons.size()) - 1;
  }
  std::vector<Alert> seen;
  int expected{0};
  bool isHeld{false};
  std::function<void()> dismiss;
};

// Keeps what to do once the user has chosen.
struct FakeOpenPanel : OpenPanel {
  void beginSheet(const QString& panelTitle, const QString& startsAt, QWidget*,
                  std::function<void(const QString&)> then) override {
    title = panelTitle;
    directory = startsAt;
    choose = std::move(then);
  }
  QString title, directory;
  std::function<void(const QString& path)> choose;
};

struct FakeWorkspace : Workspace {
  bool openURL(const QUrl& url) override {
    opened << url.toString();
    return accepts;
  }
  std::optional<QUrl> urlForApplication(const QString&) const override { return std::nullopt; }
  bool launchApplication(const QString&) override { return false; }
  QStringList opened;
  bool accepts{true};
};

}  // namespace quillo
