#pragma once

class QLabel;
class QString;

namespace quillo {

// Says in its label why something could not be done, which screen readers read out at once; nothing for no problem.
// Whether an empty label is hidden is the caller's, who shows it before.
void showProblem(QLabel& label, const QString& text);

}  // namespace quillo
