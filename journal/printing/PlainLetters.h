#pragma once

class QTextDocument;

namespace quillo {

// Lets each letter of a document be drawn as itself. Fonts draw pairs as one sign, a colon higher between figures and a
// hyphen higher between capitals; for such signs no letter is noted in a PDF, where they could be neither found nor
// copied. To be called before the document is laid out.
void drawLettersPlainly(QTextDocument& document);

}  // namespace quillo
