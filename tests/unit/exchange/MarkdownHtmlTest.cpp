#include "exchange/MarkdownHtml.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

TEST(MarkdownHtml, ShowsNothingThatRunsOrIsFetched) {
  struct Case {
    const char* text;
    const char* html;
  };
  const Case cases[] = {
      {"[a](https://example.org/?a=1&b) [b](MAILTO:a@example.org)",
       "<p><a href=\"https://example.org/?a=1&amp;b\">a</a> <a href=\"MAILTO:a@example.org\">b</a></p>\n"},
      {"[a](javascript:alert) [b](data:text/html,x)", "<p><a href=\"\">a</a> <a href=\"\">b</a></p>\n"},
      {"<script>x</script> a", "<p>&lt;script&gt;x&lt;/script&gt; a</p>\n"},
      {"![a \"b\" > c](photos/1.jpg \"title >\") d",
       "<p><span class=\"picture\">a &quot;b&quot; &gt; c</span> d</p>\n"},
      {"![](https://example.org/x/a%20b%3Cc%3E.png)", "<p><span class=\"picture\">a b&lt;c&gt;.png</span></p>\n"},
      {"![](x?a&b)![]()", "<p><span class=\"picture\">x?a&amp;b</span><span class=\"picture\"></span></p>\n"},
      {"![a](data:image/png;base64,AA==)", "<p><img src=\"data:image/png;base64,AA==\" alt=\"a\"></p>\n"},
  };
  for (const Case& one : cases)
    EXPECT_EQ(htmlOfMarkdown(QString::fromUtf8(one.text)), QByteArray(one.html)) << one.text;
}

}  // namespace
}  // namespace quillo
