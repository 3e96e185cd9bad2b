"""`cmake --install` into a temporary DESTDIR lays out what the firmware
image and the README expect: the daemon in /home/public, its init script
and systemd unit, and the operator tools in bin/ when they are built."""

import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

BUILD, MACHINE, HOST_TOOLS = sys.argv[1], sys.argv[2], sys.argv[3] == "1"
EM_ARM = 40


def elf_header(path):
    """(magic and class: 1 is 32-bit, machine) of an ELF file."""
    with open(path, "rb") as f:
        head = f.read(20)
    return head[:5], struct.unpack("<H", head[18:20])[0]


class InstallLayout(unittest.TestCase):
    def path(self, image_path):
        return os.path.join(self.root, image_path.lstrip("/"))

    def test_installs_the_daemon_for_the_target_run_from_its_folder(self):
        self.root = tempfile.mkdtemp(prefix="oledd-image-")
        self.addCleanup(shutil.rmtree, self.root, True)
        result = subprocess.run(["cmake", "--install", BUILD, "--prefix", "/usr"], env=dict(os.environ, DESTDIR=self.root),
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.assertEqual(result.returncode, 0, result.stdout)
        expected = {"home/public/oledd", "etc/init.d/S90oledd", "lib/systemd/system/oledd.service"}
        if HOST_TOOLS:
            expected |= {"usr/bin/oledctl", "usr/bin/oled-logo"}
        self.assertEqual({os.path.relpath(os.path.join(folder, name), self.root)
                          for folder, _, names in os.walk(self.root) for name in names}, expected)

        header = elf_header(self.path("/home/public/oledd"))
        self.assertEqual(header, (b"\x7fELF\x01", EM_ARM) if MACHINE == "arm32" else elf_header(sys.executable))
        self.assertTrue(os.access(self.path("/home/public/oledd"), os.X_OK))

        script = self.path("/etc/init.d/S90oledd")
        self.assertTrue(os.access(script, os.X_OK))
        self.assertEqual(subprocess.run(["sh", "-n", script]).returncode, 0)
        with open(script) as f:
            self.assertNotIn("@", f.read())
        with open(self.path("/lib/systemd/system/oledd.service")) as f:
            unit = f.read().splitlines()
        for line in ("WorkingDirectory=/home/public", "ExecStart=/home/public/oledd", "Restart=always"):
            self.assertIn(line, unit)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
