"""What ./run does where there is no display: walks through the first start, writes an entry through the agent's window,
and finds it again in Quillo's.

    demonstration.py BIN OUTPUT      BIN: where the programs are, OUTPUT: where the screenshots and the journal go
"""

import os
import shutil
import sys
import time
from pathlib import Path

from desktop import Program, press, program, run, screenshot, type_text, wait_active, wait_until, window, window_rect
from quillo import agent_of, quilloctl, walk_through_first_start

TEXT = "Walked the long way home along the river. The light was already gone but the water kept a little of it. #evening"


def list_of_entries():
    """What Quillo's window shows in the middle, below the entry window: that there is nothing yet, or else nothing."""
    x, y, width, height = window_rect(window(" — Quillo$"))
    part = f"{width // 5}x{height // 3}+{x + width * 3 // 10}+{y + height * 4 // 10}"
    return run("convert", "x:root", "-crop", part, "-format", "%#", "info:")


def main():
    os.environ["QUILLO_BIN"] = sys.argv[1]
    output = Path(sys.argv[2])
    home = output / "home"
    shutil.rmtree(home, ignore_errors=True)
    home.mkdir(parents=True)
    entry_picture, journal_picture = output / "entry-window.png", output / "journal-window.png"

    quillo = Program(program("quillo"), "--home", str(home))
    agent = None
    try:
        print("Walking through the first start", flush=True)
        walk_through_first_start()
        journal = Path(quilloctl(home, "journal", "path"))
        print(f"It made a journal: {journal}", flush=True)
        agent = agent_of(home)
        agent.window()
        wait_until(agent.is_active, "the entry window with the keyboard")
        print("The quill is in the tray and its window open; typing", flush=True)
        type_text(TEXT)
        screenshot(entry_picture)
        empty_list = list_of_entries()
        press("ctrl+Return")
        agent.wait_closed()
        entry = quilloctl(home, "entry", "list", "--limit", "1").split()[0]
        run("xdotool", "windowactivate", "--sync", window(" — Quillo$"))
        wait_active(window(" — Quillo$"))
        # The window hears of the new file by itself: the list is another then.
        wait_until(lambda: list_of_entries() != empty_list, "the entry in the list")
        time.sleep(0.5)
        screenshot(journal_picture)
    finally:
        if agent:
            agent.program.stop()
        quillo.stop()

    print("The entry as it was saved:\n")
    print(quilloctl(home, "entry", "show", entry))
    print(f"\nIts file:    {journal / 'Entries' / (entry + '.plist')}\nScreenshots: {entry_picture}\n             {journal_picture}")


if __name__ == "__main__":
    main()
