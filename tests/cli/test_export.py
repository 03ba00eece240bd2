"""Entries on their way out: every format, where it goes, and what of a journal cannot be read."""

import datetime
import json
import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import sys

from quilloctl import QUILLOCTL, QuilloctlTestCase

FORMAT_PAGE = pathlib.Path(__file__).parents[2] / "docs/journal-format.md"


class ExportTest(QuilloctlTestCase):
    def setUp(self):
        super().setUp()
        self.journal = self.make_journal()

    def write(self, number, text, **more):
        uuid = f"00000000-0000-4000-8000-{number:012X}"
        created = datetime.datetime(2024, 12, 31, 20, 30) + datetime.timedelta(hours=number)
        self.write_entry(self.journal, uuid, {"text": text, "creationDate": created, "timeZone": "Europe/Berlin", **more})
        return uuid

    def test_the_whole_and_a_part(self):
        self.write(1, "Old year #a", tags=["a"])
        self.write(3, "New year\n<b>", location={"latitude": 60.39, "longitude": 5.32, "placeName": "Bergen"}, weather={"temperature": -3.5, "text": "snow"})
        for words, texts in (([], ["Old year #a", "New year\n<b>"]), (["--newest-first"], ["New year\n<b>", "Old year #a"]), (["tag:a"], ["Old year #a"]), (["year", "place:bergen"], ["New year\n<b>"]), (["nowhere"], [])):
            exported = json.loads(self.ctl("export", "json", *words))
            self.assertEqual([entry["text"] for entry in exported["entries"]], texts, words)
        markdown = self.ctl("export", "markdown")
        self.assertIn("## Tuesday, 31 December 2024, 22:30\n\n*\\#a*\n\nOld year #a\n\n## Wednesday, 1 January 2025, 00:30\n\n*Bergen · -3.5 °C, snow*\n\nNew year\n<b>", markdown)
        self.assertIn("Bergen · -3.5 °C, snow\n\nNew year\n<b>", self.ctl("export", "text"))
        for words in (["export", "docx"], ["export"], ["export", "markdown-folder"], ["export", "json", "-o", ""]):
            self.assertEqual(self.run_ctl(*words).returncode, 2, words)
        self.assert_fails("export", "json", "on:someday", says="someday")

    def test_a_page_that_does_nothing_but_show(self):
        self.write(1, "# A\nline **bold**\nline\n\n<script>x</script> [a](javascript:alert) [b](https://b.example/?q=\"1\") www.c.example [d](JAVASCRIPT:x) ![e](http://e.example/f.png)")
        self.write(3, "B", tags=['<"&>'], location={"latitude": 1, "longitude": 2, "placeName": "<i>Place"})
        self.write(5, "[" * 40000)
        page = self.ctl("export", "html")
        self.assertEqual(re.findall(r'href="(.*?)"', page.split("<article", 1)[1]), ["", "https://b.example/?q=%221%22", "http://www.c.example", ""])
        self.assertEqual(re.findall(r'<li><a href="#(m.*?)">(.*?)</a> <i>(.*?)</i>', page), [("m2024-12", "December", "1"), ("m2025-01", "January", "2")])
        for part in ('<h2 id="m2024-12">December 2024</h2>', "<h1>A</h1>\n<p>line <strong>bold</strong><br>\nline</p>", "&lt;script&gt;", "#&lt;&quot;&amp;&gt;", "&lt;i&gt;Place", "[" * 40000):
            self.assertIn(part, page)
        self.assertNotRegex(page, r"<script|<link|src=\"[^\"]|url\(")

    def test_pages(self):
        for number in range(30):
            self.write(number, f"Entry {number} at 18:30\n\n" + "Words -> and more of them. " * 60)
        path = self.home / "out.pdf"
        self.ctl("export", "pdf", "on:2025-01-01", "-o", str(path))
        written = path.read_bytes()
        self.assertTrue(written.startswith(b"%PDF-") and written.rstrip().endswith(b"%%EOF"), written[:40])
        self.assertIn(b"/Title (\xfe\xff" + "J".encode("utf-16-be") + b")", written)
        whole = subprocess.run([QUILLOCTL, "--home", self.home, "export", "pdf"], capture_output=True, env=self.environment())
        self.assertGreater(whole.stdout.count(b"/Type /Page\n"), written.count(b"/Type /Page\n"))
        self.assertEqual(whole.stderr, b"")
        # Where the part that draws is not installed.
        alone = shutil.copy(QUILLOCTL, self.home / "quilloctl")
        result = subprocess.run([alone, "--home", self.home, "export", "pdf"], capture_output=True, env=self.environment(), text=True)
        self.assertEqual((result.returncode, result.stdout, result.stderr.count("\n")), (1, "", 1), result.stderr)
        self.assertIn("quillo-pdf.so", result.stderr)

    def test_a_file_an_entry(self):
        self.write(1, "  # What a day/night: \"really\"?\nmore", tags=["a b", "yes", "ü"], weather={"temperature": 1.5, "date": datetime.datetime(2024, 1, 1)})
        for number in (2, 3):
            self.write_entry(self.journal, f"00000000-0000-4000-8000-{number:012X}", {"text": "x" * 300, "creationDate": datetime.datetime(1900, 1, 1)})
        self.write(4, "")
        folder = self.home / "out"
        self.ctl("export", "markdown-folder", "-o", str(folder))
        files = {path.name: path.read_text() for path in folder.iterdir()}
        self.assertEqual(sorted(files), ["1900-01-01 0000 " + "x" * 50 + " (2).md", "1900-01-01 0000 " + "x" * 50 + ".md", "2024-12-31 2230 What a day night really.md", "2025-01-01 0130.md"])
        self.assertEqual(files["2024-12-31 2230 What a day night really.md"],
                         '---\nid: "00000000-0000-4000-8000-000000000001"\ndate: 2024-12-31T22:30:00+01:00\ntimezone: Europe/Berlin\ntags: ["a b", "yes", "ü"]\n'
                         'weather:\n  temperature: 1.5\n  date: 2024-01-01T00:00:00Z\n---\n\n  # What a day/night: "really"?\nmore\n')

    def test_nothing_is_written_over(self):
        self.write(1, "text")
        file, folder, empty = (self.home / name for name in ("f.json", "d", "e"))
        empty.mkdir()
        self.assertEqual(self.ctl_json("export", "json", "-o", str(file)), {"path": str(file), "entries": 1, "damaged": 0})
        self.ctl("export", "markdown-folder", "-o", str(folder))
        self.ctl("export", "markdown-folder", "-o", str(empty))
        (folder / "mine").write_text("kept")
        file.write_text("kept")
        before = sorted(os.listdir(self.home))
        self.assert_fails("export", "html", "-o", str(file), says="already")
        self.assert_fails("export", "markdown-folder", "-o", str(folder), says="already")
        self.assert_fails("export", "markdown-folder", "-o", str(file), "--force", says="f.json")
        self.assert_fails("export", "html", "-o", str(folder), "--force", says=str(folder))
        self.assert_fails("export", "html", "-o", str(self.home / "nowhere/f"), says="nowhere")
        self.assertEqual((file.read_text(), (folder / "mine").read_text()), ("kept", "kept"))
        self.ctl("export", "html", "-o", str(file), "--force")
        self.ctl("export", "markdown-folder", "-o", str(folder), "--force")
        self.assertIn("<html>", file.read_text())
        self.assertEqual((len(os.listdir(folder)), file.stat().st_mode & 0o777), (2, 0o600))
        # Nothing half-written stays beside them.
        self.assertEqual(sorted(os.listdir(self.home)), before)

    def test_damaged_entries_are_told_of(self):
        damaged = self.journal / "Entries" / f"{self.write(1, 'x')}.plist"
        damaged.write_bytes(b"torn")
        self.assertEqual(self.run_ctl("export", "text").returncode, 1)
        self.write(2, "whole")
        result = self.run_ctl("export", "text")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (0, 2), result)
        self.assertIn(damaged.name, result.stderr)
        self.assertIn("whole", result.stdout)
        file = self.home / "f"
        self.assertEqual(self.run_ctl("export", "json", "--strict", "-o", str(file)).returncode, 1)
        self.assertFalse(file.exists())

    def test_the_lines_of_the_page_on_the_format_read_a_journal(self):
        self.ctl("entry", "add", "Reading #tag 😀", "--on", "2024-02-29T21:30")
        uuid = self.write(1, "Binary", tags=["b"])
        path = self.journal / "Entries" / f"{uuid}.plist"
        path.write_bytes(plistlib.dumps(plistlib.loads(path.read_bytes()), fmt=plistlib.FMT_BINARY))
        (self.journal / "Entries" / f".{uuid}.plist.1.1.tmp").write_bytes(b"half")
        code = re.search(r"```python\n(.*?)```", FORMAT_PAGE.read_text(), re.S).group(1)
        self.assertLessEqual(len(code.splitlines()), 20)
        printed = subprocess.run([sys.executable, "-c", code, str(self.journal)], capture_output=True, text=True, check=True).stdout
        self.assertEqual(printed, "2024-02-29 21:30 #tag\nReading #tag 😀\n\n2024-12-31 22:30 #b\nBinary\n\n")
