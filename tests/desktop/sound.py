"""Listens to what the desktop's programs play."""

import array
import os
import subprocess
import tempfile
import time

RATE = 44100
# A tenth of a second, in which sound is or is not.
SLICE = RATE // 10
# Of full scale: far below the reminder's sound, far above silence, which is exact zeros.
AUDIBLE = 0.01


class Recording:
    """Everything heard between its beginning and stop()."""

    def __init__(self):
        descriptor, self._path = tempfile.mkstemp(suffix=".raw")
        self._process = subprocess.Popen(
            ["parec", "-d", "probe.monitor", "--format=s16le", f"--rate={RATE}", "--channels=1"], stdout=descriptor)
        os.close(descriptor)
        end = time.monotonic() + 10
        # It records as soon as the first bytes are there.
        while os.path.getsize(self._path) == 0 and time.monotonic() < end:
            time.sleep(0.05)

    def stop(self):
        """The bursts that were heard: pairs of begin and length in seconds. Silences below a second belong to them: a busy
        machine makes some in the middle of a sound."""
        self._process.terminate()
        self._process.wait(10)
        with open(self._path, "rb") as file:
            raw = file.read()
        os.remove(self._path)
        samples = array.array("h", raw[: len(raw) // 2 * 2])
        loud = [i * SLICE / RATE for i in range(len(samples) // SLICE)
                if max(map(abs, samples[i * SLICE:(i + 1) * SLICE])) > AUDIBLE * 32768]
        bursts = []
        for moment in loud:
            if bursts and moment - (bursts[-1][0] + bursts[-1][1]) < 1:
                bursts[-1][1] = moment + SLICE / RATE - bursts[-1][0]
            else:
                bursts.append([moment, SLICE / RATE])
        return [tuple(burst) for burst in bursts]
