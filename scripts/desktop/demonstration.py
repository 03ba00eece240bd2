"""What ./run does where there is no display: writes an entry through the real window and shows what was saved.

    demonstration.py BIN OUTPUT      BIN: where the programs are, OUTPUT: where the screenshot and the journal go
"""

import os
import shutil
import sys
from pathlib import Path

from desktop import Program, press, program, screenshot, type_text
from quillo import Agent, make_journal, quilloctl

TEXT = "Walked the long way home along the river. The light was already gone but the water kept a little of it. #evening"


def main():
    os.environ["QUILLO_BIN"] = sys.argv[1]
    output = Path(sys.argv[2])
    home = output / "home"
    shutil.rmtree(home, ignore_errors=True)
    home.mkdir(parents=True)
    journal = make_journal(home)
    print(f"Created a journal: {journal}")

    agent = Agent(Program(program("quillo-agent"), "--home", str(home)))
    try:
        print("Clicking the icon in the tray", flush=True)
        agent.open_window()
        print("The window is open; typing", flush=True)
        type_text(TEXT)
        picture = output / "entry-window.png"
        screenshot(picture)
        press("ctrl+Return")
        agent.wait_closed()
    finally:
        agent.program.stop()

    entry = quilloctl(home, "entry", "list", "--limit", "1").split()[0]
    print("The entry as it was saved:\n")
    print(quilloctl(home, "entry", "show", entry))
    print(f"\nIts file:   {journal / 'Entries' / (entry + '.plist')}\nScreenshot: {picture}")


if __name__ == "__main__":
    main()
