#pragma once

namespace quillo {

// Of an exported page.
inline constexpr const char* htmlStyle = R"(:root {
  --paper: #fbfaf7; --ink: #26241f; --quiet: #6f6a60; --line: #e2ddd2; --accent: #8a4b20; --field: #f1eee6;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #1d1c1a; --ink: #e6e2d9; --quiet: #9c968a; --line: #38352f; --accent: #e0a878; --field: #282622;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 3rem 1.25rem 6rem; max-width: 42rem; background-color: var(--paper); color: var(--ink);
  font: 1.0625rem/1.6 Charter, "Bitstream Charter", "Noto Serif", Georgia, serif; overflow-wrap: break-word;
}
h1, h2, h3, header, nav, .about, .tags { font-family: Inter, system-ui, "Noto Sans", sans-serif; }
h1 { margin: 0; font-size: 2rem; line-height: 1.2; }
.about { margin: .25rem 0 2rem; color: var(--quiet); font-size: .9rem; }
a { color: var(--accent); }
nav { margin-bottom: 3rem; border-style: solid; border-width: 1px 0; border-color: var(--line); padding: .75rem 0; }
nav { font-size: .9rem; }
nav ul { margin: 0; padding: 0; list-style: none; }
nav > ul > li { position: relative; padding: .2rem 0 .2rem 4rem; }
nav b { position: absolute; left: 0; }
nav li li { display: inline-block; margin-right: .9rem; }
nav a { text-decoration: none; }
nav a:hover { text-decoration: underline; }
nav i { color: var(--quiet); font-style: normal; font-size: .8em; }
h2 { margin: 3.5rem 0 0; font-size: 1.35rem; color: var(--accent); }
article { padding: 1.5rem 0; border-bottom: 1px solid; border-color: var(--line); }
header { color: var(--quiet); font-size: .85rem; }
header h3 { display: inline; margin: 0 .4em 0 0; color: var(--ink); font-size: .95rem; }
header span::before { content: "\00b7\00a0"; }
.text { margin-top: .75rem; }
.text > :first-child { margin-top: 0; }
.text > :last-child { margin-bottom: 0; }
.text h1, .text h2, .text h3, .text h4, .text h5, .text h6 {
  margin: 1.2em 0 .4em; font-size: 1.1rem; line-height: 1.3; color: inherit;
}
.text h1 { font-size: 1.3rem; }
.text h2 { font-size: 1.2rem; }
.text p, .text li, .text td, .text h1, .text h2, .text h3 { unicode-bidi: plaintext; text-align: start; }
.plain { white-space: pre-wrap; }
.text ul, .text ol { padding-inline-start: 1.6em; }
.text .task-list-item { list-style: none; unicode-bidi: normal; }
.task-list-item-checkbox { margin: 0; margin-inline: -1.4em .4em; vertical-align: -.1em; }
.picture { color: var(--quiet); font-style: italic; }
.picture::before { content: "[picture] "; }
img { max-width: 100%; height: auto; }
blockquote { margin: 1em 0; padding-inline-start: 1rem; border-inline-start: 3px solid var(--line); color: var(--quiet); }
code, pre { font-family: ui-monospace, "DejaVu Sans Mono", monospace; font-size: .875em; }
code, pre, .tags li { background-color: var(--field); }
code { padding: .1em .3em; border-radius: 3px; }
pre { padding: .75rem 1rem; border-radius: 6px; overflow-x: auto; }
pre code { padding: 0; font-size: 1em; }
table { border-collapse: collapse; }
th, td { padding: .3em .7em; border: 1px solid; border-color: var(--line); }
hr { border: 0; border-top: 1px solid; border-color: var(--line); }
.tags { margin: 1rem 0 0; padding: 0; list-style: none; font-size: .8rem; }
.tags li { display: inline-block; margin: 0 .4rem .4rem 0; padding: .1em .6em; border-radius: 1em; color: var(--quiet); }
@media print {
  :root { --paper: #fff; --ink: #000; --quiet: #555; --line: #ccc; --accent: #000; --field: #f4f4f4; }
  @page { margin: 2cm; }
  body { max-width: none; padding: 0; font-size: 11pt; }
  nav { display: none; }
  h2, h3, header { break-after: avoid; }
  p, li, blockquote { orphans: 2; widows: 2; }
  pre, table { break-inside: avoid; }
  pre { white-space: pre-wrap; }
}
)";

}  // namespace quillo
