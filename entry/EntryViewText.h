#pragma once

#include "entry/session/EntryText.h"

namespace quillo {

class EntryViewTextView;

// The text of the entry window's view. Until that is made, which the first show of the window does, keeps it itself.
class EntryViewText final : public EntryText {
 public:
  // Moves the text into the view, which must outlive its use here.
  void setView(EntryViewTextView& view);

  [[nodiscard]] QString text() const override;
  void setText(const QString& text) override;
  void commitComposition() override;

 private:
  EntryViewTextView* m_view{nullptr};
  QString m_text;  // while there is no view
};

}  // namespace quillo
