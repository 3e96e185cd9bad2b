"""A simulated box with status pages, for the tests of the screen loops
and the logo: settings from the canonical defaults with chosen changes, a
fixed CPU load and temperature, an address on eth0 and a peer to send from."""

from harness import PeerTest, eventually
from test_startup import settings_text

IOSTAT = """#!/bin/sh
printf 'Linux 4.9.37 (box) \\t11/22/26 \\t_armv7l_\\t(2 CPU)\\n\\n'
printf 'avg-cpu:  %%user   %%nice %%system %%iowait  %%steal   %%idle\\n'
printf '           %s    0.00    1.20    0.05    0.00   95.23\\n\\n' 3.52
"""

TOOLS = ("/bin/iostat", "/home/public/get_temperature")


def read_pgm(path):
    """(width, height, rows of pixel values)."""
    data = open(path, "rb").read()
    parts = data.split(maxsplit=4)
    width, height = int(parts[1]), int(parts[2])
    return width, height, [list(parts[4][r * width:(r + 1) * width]) for r in range(height)]


class LoopTest(PeerTest):
    def start_box(self, extra_files=None, args=(), **changes):
        files = {
            "/data/oled.ini": settings_text(changes),
            "/bin/iostat": IOSTAT,
            "/home/public/get_temperature": "#!/bin/sh\necho 47\n",
            "/tmp/vi0": "VI0:1920x1080@60\n",
            "/sys/class/net/eth0/carrier": "1\n",
            "/sys/class/net/eth0/speed": "1000\n",
        }
        files.update(extra_files or {})
        self.sim = self.box()
        for path, content in files.items():
            self.sim.write(path, content, mode=0o755 if path in TOOLS else None)
        self.sim.start(*args)
        self.sim.wait_for("save config succeed")
        return self.sim

    wait_until = staticmethod(eventually)
