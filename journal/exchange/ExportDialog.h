#pragma once

#include "journal/exchange/ExchangeDialog.h"
#include "journal/exchange/ExportRun.h"
#include "qlcore/index/JournalQuestion.h"

#include <QStringList>
#include <QUrl>

#include <functional>
#include <optional>

class QLineEdit;

namespace quillo {

class ChoiceBox;
class FormRow;
class TickBox;

// What there is to export, and with what.
struct ExportDialogServices {
  QUrl journal;
  QString journalName;
  qint64 entries{0};
  // What the window's search shows; nothing where it shows everything.
  std::optional<JournalQuestion> found;
  qint64 foundEntries{0};
  QStringList selected;  // identifiers
  // What draws a PDF with the settings of now; called in the window's thread, and what it answers in another.
  std::function<DocumentMaker()> pdf;
  // All of it is at `path`, and the window closed.
  std::function<void(const QString& path, const JournalExport::Result& result)> exported;
};

// Asks what of a journal is to be exported, as what and where, and does it. It stays open until that is done.
class ExportDialog final : public ExchangeDialog {
  Q_OBJECT

 public:
  // `format` is the name of the one to begin with.
  ExportDialog(ExportDialogServices services, const QString& format, QWidget* parent);

 protected:
  void carryOut() override;

 private:
  enum class Part { All, Found, Selected };

  void addParts();
  void addFormats(const QString& format);
  void addPath();
  [[nodiscard]] Part part() const;
  [[nodiscard]] const ExportFormat& format() const;
  void formatDidChange();
  void pathDidChange();
  void choosePath();
  void suggestPath(const QString& folder);
  [[nodiscard]] QString path() const;
  void finished(const JournalExport::Result& result, const QString& path);

  ExportDialogServices m_services;
  ChoiceBox* m_part;
  ChoiceBox* m_format;
  QLineEdit* m_path;
  TickBox* m_replace;
  FormRow* m_formatRow;
  FormRow* m_pathRow;
  FormRow* m_replaceRow;
  bool m_isSuggested{true};  // the path is ours
};

}  // namespace quillo
