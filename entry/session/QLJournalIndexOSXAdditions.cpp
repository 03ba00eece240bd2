#include "entry/session/QLJournalIndexOSXAdditions.h"

#include "entry/session/Alerts.h"
#include "platform/QtInternals.h"

#include <QApplication>
#include <QWidget>

namespace quillo::QLJournalIndexOSXAdditions {

using namespace Qt::StringLiterals;

QWidget* alertParent() {
  if (QWidget* active = QApplication::activeWindow()) return active;
  const auto windows = QApplication::topLevelWidgets();
  for (QWidget* window : windows) {
    // Menus, tool tips and the tray's icon are windows of Qt's, and no place for a sheet.
    const Qt::WindowType type = window->windowType();
    const bool carriesSheets = type == Qt::Window || type == Qt::Dialog || type == Qt::Sheet || type == Qt::Tool;
    if (window->isVisible() && carriesSheets && !window->inherits(QtInternals::trayIconWindow)) return window;
  }
  return nullptr;
}

int runAlert(const Alert& alert, Alerts& alerts) {
  QWidget* parent = alertParent();
  if (parent) {
    parent->raise();
    parent->activateWindow();
  }
  return alertDefaultReturn - alerts.runAlert(alert, parent);
}

// The third button of both questions has an empty title, and is therefore none.
static int ask(Alerts& alerts, const QString& message, const QString& button, const QString& informativeText) {
  return runAlert({message, informativeText, {button, u"Cancel"_s}}, alerts);
}

bool deleteEntryOrEntryFileInteractively(QLJournalIndex& index, const Deletable& item, Alerts& alerts) {
  if (ask(alerts, u"Are you sure you wish to move this entry to the Trash?"_s, u"Move To Trash"_s, {}) !=
      alertDefaultReturn)
    return false;
  Error error;
  if (deleteEntryOrEntryFile(index, item, /*moveToTrash=*/true, &error)) return true;
  if (error.domain == ErrorDomain::osStatus && error.code == ErrorCode::fileNotFound) return true;

  if (ask(alerts, u"Unable to move to Trash"_s, u"Delete"_s,
          u"Would you like to attempt to permanently delete this entry?"_s) != alertDefaultReturn)
    return false;
  error = {};
  if (deleteEntryOrEntryFile(index, item, /*moveToTrash=*/false, &error)) return true;
  alerts.runAlert(Alert::withError(error), alertParent());
  return false;
}

bool deleteEntryFileInteractively(QLJournalIndex& index, const std::shared_ptr<QLJournalEntryFile>& entryFile,
                                  Alerts& alerts) {
  return deleteEntryOrEntryFileInteractively(index, entryFile, alerts);
}

bool deleteEntryInteractively(QLJournalIndex& index, const QLEntry& entry, Alerts& alerts) {
  return deleteEntryOrEntryFileInteractively(index, entry, alerts);
}

}  // namespace quillo::QLJournalIndexOSXAdditions
