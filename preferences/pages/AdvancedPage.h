#pragma once

#include "preferences/pages/PreferencePage.h"

class QTableView;

namespace quillo {

struct PreferencesServices;

// The log, what else the quill's window does, and every setting as a table.
class AdvancedPage : public PreferencePage {
  Q_OBJECT

 public:
  AdvancedPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent);

 private:
  void addLog();
  void addTable();
  void resetCurrent();

  PreferencesServices& m_services;
  QTableView* m_table;
};

}  // namespace quillo
