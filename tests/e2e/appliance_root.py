"""The shipped oledd run whole, as a firmware engineer tries it before it
goes into an image: a private root folder holding the box's files, the
program and its libraries, entered through a mount namespace of its own
(with /proc and /sys of the box's network namespace) and unshare --root.
Its /dev/mem is a sparse file standing in for the SoC's register space, so
what the daemon wrote to its registers can be read back from outside.
The ARM build runs under a user-mode emulator copied into the root."""

import os
import pty
import re
import shutil
import struct
import subprocess
import threading
import tty

from harness import SimBox, run

SAMPLE_ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "sim", "sample-root")
# Covers the pin-multiplexing block (0x120F0000) and the last GPIO group
# (0x122D0000); a sparse file costs no disk.
REGISTER_SPACE = 0x13000000
# The box's whole userland, as on the appliance: a static BusyBox and its
# applets (the sample root's iostat stand-in stays). The host's build, so
# the scripts an emulated daemon starts run natively.
BUSYBOX = "/usr/bin/busybox"

# Mounts the box's own /proc and /sys inside the root, then enters it with
# a clean environment. Every step execs, so the daemon keeps the pid.
_ENTER = ('root=$1; shift; mount -t proc proc "$root/proc" && mount -t sysfs sysfs "$root/sys" && '
          'exec "$ENV" -i PATH=/bin "$UNSHARE" --root="$root" --wd=/home/public "$@"')


def libraries(program, emulator=()):
    """Every file the program loads, as paths of the box (the emulator's
    with -L DIR finds them under DIR); none for a static program."""
    interpreter = re.findall(r"Requesting program interpreter: (\S+)\]", run("readelf", "-l", "-W", program).stdout)
    if not interpreter:
        return []
    listed = run(*(list(emulator) + [interpreter[0], "--list", program])).stdout
    return interpreter + re.findall(r"=> (/\S+)", listed)


def library_root(emulator):
    """Where the emulator's -L option has the ARM libraries; the host's "/"."""
    emulator = list(emulator)
    return emulator[emulator.index("-L") + 1] if "-L" in emulator[:-1] else "/"


class ApplianceBox(SimBox):
    """A private root folder with oledd (at /home/public, where the box
    installs it) run in it. Output comes through a terminal, line by line,
    as on the box's serial console."""

    def __init__(self, netns, oledd, emulator=()):
        super().__init__(netns=netns)
        try:
            self._fill(oledd, emulator)
        except BaseException:
            self.close()
            raise

    def _fill(self, oledd, emulator):
        shutil.copytree(SAMPLE_ROOT, self.root, dirs_exist_ok=True)
        for folder in ("/dev", "/proc", "/sys", "/tmp"):
            os.makedirs(self.host(folder), exist_ok=True)
        with open(self.host("/dev/mem"), "wb") as f:
            f.truncate(REGISTER_SPACE)
        self.install(BUSYBOX, "/bin/busybox")
        for applet in run(BUSYBOX, "--list").stdout.split():
            if not os.path.lexists(self.host("/bin/" + applet)):
                os.symlink("busybox", self.host("/bin/" + applet))
        self.install(oledd, "/home/public/oledd", emulator)
        self.program = ["/home/public/oledd"]
        if emulator:
            inside = "/usr/bin/" + os.path.basename(emulator[0])
            self.install(shutil.which(emulator[0]), inside)
            self.program = [inside] + list(emulator[1:]) + self.program

    def install(self, program, box_path, emulator=()):
        """Copies a program and the libraries it loads into the root."""
        found = library_root(emulator)
        for source, box_file in [(program, box_path)] + [(os.path.join(found, lib.lstrip("/")), lib)
                                                         for lib in libraries(program, emulator)]:
            os.makedirs(os.path.dirname(self.host(box_file)), exist_ok=True)
            shutil.copy2(source, self.host(box_file))

    def poke(self, address, value):
        with open(self.host("/dev/mem"), "r+b") as f:
            f.seek(address)
            f.write(struct.pack("<I", value))

    def register(self, address):
        with open(self.host("/dev/mem"), "rb") as f:
            f.seek(address)
            return struct.unpack("<I", f.read(4))[0]

    def start(self):
        argv = ["unshare", "--mount", "--propagation", "private", "sh", "-c", _ENTER, "sh", self.root] + self.program
        environment = dict(os.environ, ENV=shutil.which("env"), UNSHARE=shutil.which("unshare"))
        master, terminal = pty.openpty()
        tty.setraw(terminal)  # no carriage returns added to the lines
        self.proc = subprocess.Popen(self.netns.exec_args(argv), stdin=subprocess.DEVNULL, stdout=terminal,
                                     stderr=terminal, env=environment)
        os.close(terminal)
        self._stream = os.fdopen(master, "r", errors="replace")
        self._reader = threading.Thread(target=self._collect, daemon=True)
        self._reader.start()
        return self
