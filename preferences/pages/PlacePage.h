#pragma once

#include "preferences/pages/PreferencePage.h"

namespace quillo {

// Whether an entry gets its place and weather, where both come from, and what is sent to whom for it.
class PlacePage : public PreferencePage {
  Q_OBJECT

 public:
  PlacePage(PreferenceStore& store, QWidget* parent);

 private:
  void addTemperature();
  void addPosition();
};

}  // namespace quillo
