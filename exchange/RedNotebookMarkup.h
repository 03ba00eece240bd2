#pragma once

#include <QString>

namespace quillo {

// A text with the formatting of the diary program RedNotebook, which is that of txt2tags, as Markdown: bold, italic,
// underlined (emphasis, since Markdown has no such), struck, code, headings, lists, links, images, rules, colours
// (which are left out) and line breaks. What is none of that stays as it stands.
[[nodiscard]] QString markdownOfRedNotebook(const QString& text);

}  // namespace quillo
