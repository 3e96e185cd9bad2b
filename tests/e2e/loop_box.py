"""A simulated box for the tests of the screen loops: settings from the
canonical defaults with chosen changes, an address on eth0 and a peer to
send from."""

from harness import PeerTest
from test_startup import settings_text


def read_pgm(path):
    """(width, height, rows of pixel values)."""
    with open(path, "rb") as f:
        data = f.read()
    parts = data.split(maxsplit=4)
    width, height = int(parts[1]), int(parts[2])
    return width, height, [list(parts[4][r * width:(r + 1) * width]) for r in range(height)]


class LoopTest(PeerTest):
    def start_box(self, **changes):
        self.sim = self.box(files={"/data/oled.ini": settings_text(changes)})
        self.sim.start()
        self.sim.wait_for("save config succeed")
        return self.sim
