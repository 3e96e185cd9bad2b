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
    """(class, machine) of an ELF file: class 1 is 32-bit, 2 is 64-bit."""
    with open(path, "rb") as f:
        head = f.read(20)
    if head[:4] != b"\x7fELF":
        return None
    return head[4], struct.unpack("<H", head[18:20])[0]


class InstallLayout(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = tempfile.mkdtemp(prefix="oledd-image-")
        env = dict(os.environ, DESTDIR=cls.root)
        cls.result = subprocess.run(["cmake", "--install", BUILD, "--prefix", "/usr"], env=env,
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        cls.files = set()
        for folder, _, names in os.walk(cls.root):
            for name in names:
                cls.files.add(os.path.relpath(os.path.join(folder, name), cls.root))

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.root, ignore_errors=True)

    def path(self, image_path):
        return os.path.join(self.root, image_path.lstrip("/"))

    def test_installs_exactly_the_named_files(self):
        self.assertEqual(self.result.returncode, 0, self.result.stdout)
        expected = {"home/public/oledd", "etc/init.d/S90oledd", "lib/systemd/system/oledd.service"}
        if HOST_TOOLS:
            expected |= {"usr/bin/oledctl", "usr/bin/oled-logo"}
        self.assertEqual(self.files, expected)

    def test_daemon_is_built_for_the_target(self):
        header = elf_header(self.path("/home/public/oledd"))
        self.assertEqual(header, (1, EM_ARM) if MACHINE == "arm32" else elf_header(sys.executable))
        self.assertTrue(os.access(self.path("/home/public/oledd"), os.X_OK))

    def test_init_script_and_unit_run_the_daemon_from_its_folder(self):
        script = self.path("/etc/init.d/S90oledd")
        self.assertTrue(os.access(script, os.X_OK))
        self.assertEqual(subprocess.run(["sh", "-n", script]).returncode, 0)
        text = open(script).read()
        self.assertNotIn("@", text)
        unit = open(self.path("/lib/systemd/system/oledd.service")).read().splitlines()
        for line in ("WorkingDirectory=/home/public", "ExecStart=/home/public/oledd", "Restart=always"):
            self.assertIn(line, unit)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
