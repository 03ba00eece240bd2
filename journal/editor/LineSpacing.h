#pragma once

class QPlainTextEdit;

namespace quillo {

// Puts the lines of a plain text apart, `spacing` times their height, and each paragraph at the side where its script
// begins. To be called once a view, before there is text in
// it; the document's layout is replaced.
void setLineSpacing(QPlainTextEdit& view, double spacing);

}  // namespace quillo
