"""quilloctl reminder next --batch: a line out for each line in, whatever the line holds."""

import itertools
import json
import subprocess
import unittest
from datetime import datetime

from quilloctl import QUILLOCTL

QUESTION = {"unit": 16, "count": 1, "base": "2014-03-10T20:00:00Z", "base_zone": "Europe/Berlin", "period": 0,
            "after": "2014-03-20T21:30:00Z", "zone": "Europe/Berlin", "n": 3}
ANSWER = ["2014-03-21T20:00:00Z", "2014-03-22T20:00:00Z", "2014-03-23T20:00:00Z"]


def moment(text):
    return datetime.fromisoformat(text.replace("Z", "+00:00"))


def answers_to(lines):
    done = subprocess.run([QUILLOCTL, "reminder", "next", "--batch"], input=b"\n".join(lines), capture_output=True, timeout=60)
    assert done.returncode == 0 and not done.stderr, (done.returncode, done.stderr[:500])
    assert done.stdout.endswith(b"\n")
    answers = [json.loads(line) for line in done.stdout.decode("utf-8").split("\n")[:-1]]
    assert len(answers) == len(lines), (len(answers), len(lines))
    return answers


def absurd_questions():
    """Settings that can be stored and make little sense, each with each."""
    for count, unit, base, period, after in itertools.product(
            (0, 1, 2**32, 2**63, 2**64 - 1), (0, 2, 3, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 2**63),
            ("0001-01-01T00:00:00Z", "1582-10-10T12:00:00Z", "2014-03-10T20:00:00Z", "9999-12-31T23:59:59Z"),
            (-1, 0, 3600, 1e12, -1e308), ("0001-01-02T00:00:00Z", "2014-03-20T21:30:00Z", "9999-12-31T23:59:58Z")):
        yield {**QUESTION, "count": count, "unit": unit, "base": base, "period": period, "after": after}


def broken_lines():
    """Each must give an error and nothing else."""
    whole = json.dumps(QUESTION).encode()
    yield from (b"", b" ", b"\r", b"\0", b"null", b"[]", b"{}", b"not json", whole + b"x", whole + whole, b"\xef\xbb\xbf", b"\xff" * 100)
    # Torn at every place.
    yield from (whole[:at] for at in range(len(whole)))
    for key, value in (("period", b"NaN"), ("period", b"Infinity"), ("period", b"-Infinity"), ("period", b'"1"'), ("count", b"-1"),
                       ("count", b"1.5"), ("count", b"18446744073709551617e9"), ("unit", b"1e400"), ("unit", b"{}"), ("n", b"0"),
                       ("n", b"1e12"), ("n", b"1e-300"), ("count", b"0x10"), ("base", b'"-0001-01-01T00:00:00Z"'), ("base", b'"now"'),
                       ("base", b'"10000-01-01T00:00:00Z"'), ("base", b'"2014-02-30T00:00:00Z"'), ("after", b"[[]]"),
                       ("base_zone", b'"Mars/Olympus"'), ("zone", b'""'), ("zone", b'"../../etc/passwd"'), ("zone", b'"/etc/localtime"'),
                       ("zone", b'"Europe/Berlin\\u0000"'), ("zone", b'"Europe/\xff\xfeBerlin"'), ("zone", b'"Europe/Ber\0lin"'),
                       ("zone", b'"\\ud800"'), ("zone", b'"' + b"Z" * 1_000_000 + b'"'), ("base", b'"' + b"9" * 1_000_000 + b'"'),
                       ("unit", b"[" * 100_000 + b"]" * 100_000), ("unit", b'{"a":' * 100_000), ("count", b"9" * 1_000_000)):
        yield json.dumps({**QUESTION, key: "here"}).encode().replace(b'"here"', value)


class ReminderBatchTest(unittest.TestCase):
    def test_absurd_settings_give_later_dates_or_none(self):
        questions = list(absurd_questions())
        for question, answer in zip(questions, answers_to([json.dumps(q).encode() for q in questions])):
            self.assertEqual(list(answer), ["next"], question)
            # A base date still to come is the first reminder, whatever the rest says. In Berlin's year 10000 there is none.
            dates = [moment(question["after"]), *map(moment, answer["next"])]
            self.assertTrue(all(a < b for a, b in zip(dates, dates[1:])), (question, answer))
            self.assertLessEqual(len(dates), 4)
            if moment(question["base"]) <= dates[0]:
                if question["count"] == 0 or question["unit"] in (0, 2, 3, 2**63):
                    self.assertEqual(answer["next"], [], question)
            elif not question["base"].startswith("9999"):
                self.assertEqual(answer["next"][0], question["base"], question)

    def test_broken_lines_give_one_error_each_and_leave_the_others_alone(self):
        question = json.dumps(QUESTION).encode()
        lines = [line for broken in broken_lines() for line in (broken, question)]
        answers = answers_to(lines)
        for line, answer in zip(lines[::2], answers[::2]):
            self.assertEqual(list(answer), ["error"], line[:200])
            self.assertLess(len(answer["error"]), 200, line[:200])
        for answer in answers[1::2]:
            self.assertEqual(answer, {"next": ANSWER})

    def test_unusual_lines_are_answered_in_order(self):
        other = {**QUESTION, "unit": 8, "n": 1}
        question = json.dumps(QUESTION).encode()
        lines = [json.dumps(other).encode(), question + b" " * 2_000_000, b"\t" + question + b"\r", question[:-1] + b', "more": "' + b"x" * 2_000_000 + b'"}',
                 question[:-1] + b', "more": "\\u0000\xf0\x9f\x98\x80"}', question[:-1] + b', "n": 3}',
                 json.dumps({**QUESTION, "period": 1e308}).encode()]
        self.assertEqual(answers_to(lines), [{"next": ["2014-04-10T19:00:00Z"]}] + [{"next": ANSWER}] * (len(lines) - 1))
