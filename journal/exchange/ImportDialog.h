#pragma once

#include "journal/exchange/ExchangeDialog.h"
#include "journal/exchange/ImportRun.h"

#include <QUrl>

#include <functional>
#include <optional>

class QLabel;
class QLineEdit;
class QListWidget;
class QTimer;

namespace quillo {

class ChoiceBox;
class FormRow;
class OpenPanel;
class TickBox;

struct ImportDialogServices {
  QUrl journal;
  bool makesTagsOfHashtags{false};
  OpenPanel& openPanel;
  // It is done, and the window closed.
  std::function<void(const ImportOutcome& outcome)> imported;
};

// Asks for a file or folder, reads it at once and shows what would come of it, then imports it.
class ImportDialog final : public ExchangeDialog {
  Q_OBJECT

 public:
  ImportDialog(ImportDialogServices services, QWidget* parent);

  // What is to be imported, as if it had been chosen.
  void setSource(const QString& path);

 protected:
  void carryOut() override;

 private:
  void addSource();
  void addPreview();
  void choose();
  [[nodiscard]] ImportOrder order() const;
  void guessFormat();
  void look();
  void showPreview(const ImportPreview& preview);
  void updateButton();
  void finished(const ImportOutcome& outcome);

  ImportDialogServices m_services;
  QLineEdit* m_source;
  ChoiceBox* m_format;
  FormRow* m_sourceRow;
  FormRow* m_formatRow;
  QLabel* m_summary;
  QListWidget* m_problems;
  TickBox* m_goesOn;
  TickBox* m_replaces;
  bool m_isFormatChosen{false};
  // Reads once the person has stopped typing.
  QTimer* m_pause;
  // Of what is in the fields; nothing until it is read.
  std::optional<ImportPreview> m_preview;
};

}  // namespace quillo
