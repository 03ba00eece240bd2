#pragma once

#include "journal/exchange/BackgroundWork.h"

#include <QDialog>

#include <functional>

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace quillo {

class Form;

// A window of fields whose choice takes a while to be carried out: it shows how far that is, and Cancel ends that
// first.
class ExchangeDialog : public QDialog {
  Q_OBJECT

 public:
  ~ExchangeDialog() override;

  void reject() override;

 protected:
  // `primary` is what the button says that carries it out.
  ExchangeDialog(const QString& title, const QString& primary, QWidget* parent);

  // The button was clicked.
  virtual void carryOut() = 0;

  [[nodiscard]] Form& form() { return *m_form; }
  // Above the progress and the buttons.
  [[nodiscard]] QVBoxLayout& column() { return *m_body; }
  [[nodiscard]] QPushButton& primary() { return *m_primary; }
  [[nodiscard]] QPushButton& cancel() { return *m_cancel; }
  [[nodiscard]] bool isAtWork() const { return m_work->isRunning(); }

  // Carries out `work` with the fields switched off, then calls `done`.
  void run(std::function<void(BackgroundWork::Monitor&)> work, std::function<void()> done);
  // Ends what is running and waits for that; its `done` is not called.
  void abandonWork();
  // What went wrong; empty for nothing.
  void setProblem(const QString& text);

  void changeEvent(QEvent* event) override;
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void build();
  void makeWork();
  void fitHeight();
  void setAtWork(bool isAtWork);
  void showProgress(const QString& what, qint64 done, qint64 total);

  QWidget* m_fields;
  QVBoxLayout* m_body;
  Form* m_form;
  QLabel* m_problem;
  QLabel* m_state;
  QProgressBar* m_progress;
  QWidget* m_footer;
  QPushButton* m_cancel;
  QPushButton* m_primary;
  std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace quillo
