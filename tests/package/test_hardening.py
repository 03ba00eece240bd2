"""What the linker and the compiler were to put into the programs against attacks. For release builds only."""

import os
import subprocess
import unittest
from pathlib import Path

PROGRAMS = Path(os.environ["QUILLO_BIN"])


def readelf(option, path):
    return subprocess.run(["readelf", "--wide", option, path], capture_output=True, text=True, check=True).stdout


class HardeningTest(unittest.TestCase):
    def test_programs_and_modules_are_hardened(self):
        modules = sorted(PROGRAMS.glob("quillo-*.so"))
        self.assertTrue(modules)
        for path in (PROGRAMS / "quillo", PROGRAMS / "quillo-agent", PROGRAMS / "quilloctl", *modules):
            with self.subTest(path.name):
                dynamic, segments, symbols = (readelf(option, path) for option in ("--dynamic", "--segments", "--dyn-syms"))
                if path.suffix != ".so":
                    self.assertRegex(dynamic, r"FLAGS_1.*\bPIE\b")
                # Read-only after the start, which takes both, the table of imported functions too.
                self.assertRegex(segments, r"\bGNU_RELRO\b")
                self.assertRegex(dynamic, r"FLAGS_1.*\bNOW\b")
                self.assertRegex(segments, r"GNU_STACK.* RW +0x")
                self.assertNotRegex(segments, r"LOAD.* RWE ")
                # Where these are imported, they were compiled in.
                self.assertIn("__stack_chk_fail", symbols)
                if path.suffix != ".so":
                    self.assertRegex(symbols, r"__mem(cpy|set|move)_chk")
                self.assertNotRegex(dynamic, r"\bTEXTREL\b")


if __name__ == "__main__":
    unittest.main()
