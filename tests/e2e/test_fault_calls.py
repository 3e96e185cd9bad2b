"""System calls that fail on purpose (libfiu's preload library, Debian's
fiu-utils): what the box does when the system says no. Each row names the
call, the errno and what a user must see."""

import errno
import os
import time

from fault_box import FaultTest
from harness import BOX, eventually, main, run

FIU = ["fiu-run", "-x"]


def fiu_control(box, command):
    run("fiu-ctrl", "-c", command, str(box.proc.pid))


class FaultCalls(FaultTest):
    def get(self):
        return self.peer_oledctl("get", "--box", BOX, "--timeout", "0.5").returncode == 0

    def peer_oledctl(self, *args):
        return run(*self.peer.exec_args([os.path.join(os.environ["OLEDD_BIN_DIR"], "oledctl")] + list(args)),
                   check=False, timeout=30)

    def test_a_control_socket_that_cannot_serve_ends_the_daemon_with_one_line(self):
        for call, code in (("posix/io/net/socket", errno.EAFNOSUPPORT), ("posix/io/net/bind", errno.EADDRINUSE)):
            with self.subTest(call=call):
                box = self.box()
                box.start(wrapper=FIU + ["-c", "enable name=%s,failinfo=%d" % (call, code)])
                self.assertEqual(box.wait(timeout=15), 1)
                box.wait_for("control server: cannot serve UDP port 16124 (%s)" % os.strerror(code))

    def test_transient_socket_errors_leave_the_box_serving(self):
        self.sim = box = self.box()
        box.start(wrapper=FIU)
        eventually(self.get, 10, "the box answering")
        for call, code, how in (("posix/io/net/recvmsg", errno.EINTR, "enable_random"),
                                ("posix/io/net/recvmsg", errno.ENOBUFS, "enable_random"),
                                ("posix/io/net/sendto", errno.EPERM, "enable"),
                                ("posix/io/net/sendto", errno.ENOBUFS, "enable")):
            with self.subTest(call=call, errno=code):
                start = len(box.output())
                probability = ",probability=0.5" if how == "enable_random" else ""
                fiu_control(box, "%s name=%s,failinfo=%d%s" % (how, call, code, probability))
                if how == "enable":
                    self.assertFalse(self.get())
                    box.wait_for("replyoled: cannot send to", after=start)
                else:
                    eventually(self.get, 5, "an answer while %s fails half the time" % call, every=0)
                fiu_control(box, "disable name=%s" % call)
                eventually(self.get, 5, "an answer once %s works" % call, every=0)
                self.assertIsNone(box.proc.poll())

    def test_a_save_that_fails_keeps_the_old_file_and_the_change(self):
        self.sim = box = self.box()
        box.start(wrapper=FIU)
        eventually(self.get, 10, "the box answering")
        value = 0
        for call, code in (("posix/io/oc/open", errno.EACCES), ("posix/io/rw/write", errno.ENOSPC),
                           ("posix/io/rw/write", errno.EIO), ("posix/io/sync/fsync", errno.EIO),
                           ("posix/io/dir/rename", errno.EROFS), ("posix/io/dir/rename", errno.ENOSPC)):
            with self.subTest(call=call, errno=code):
                before = box.read("/data/oled.ini")
                start = len(box.output())
                fiu_control(box, "enable name=%s,failinfo=%d" % (call, code))
                value += 1
                self.send("sleep=%d" % (10 + value))
                box.wait_for("save config failed", after=start)
                fiu_control(box, "disable name=%s" % call)
                self.assertEqual(box.read("/data/oled.ini"), before)
                self.assertEqual([name for name in os.listdir(box.host("/data")) if name != "oled.ini"], [])
                # The change is still the box's, and goes with the next save.
                self.send("vi=%d" % (value % 2))
                eventually(lambda: "OLed_a_sleep_tim=%d" % (10 + value) in box.read("/data/oled.ini").splitlines(),
                           5, "the failed change saved later")

    def test_probes_whose_pages_cannot_be_opened_or_read_leave_nothing_behind(self):
        # The big panel's loop and the LED loop together call every probe.
        box = self.start_box({"OLed_a_kind_start": "0", "OLed_a_sleep_tim": "0", "OLed_a_led_start": "1",
                              "kLed_cpu_gpio": "5_1"}, wrapper=FIU)
        descriptors = self.process.lasting_descriptors()
        self.process.quiet(descriptors)
        threads = self.process.num_threads()
        for call, code in (("posix/io/oc/open", errno.EMFILE), ("posix/stdio/oc/fdopen", errno.ENOMEM),
                           ("posix/stdio/gp/fgets", errno.EIO)):
            with self.subTest(call=call, errno=code):
                fiu_control(box, "enable_random name=%s,failinfo=%d,probability=0.3" % (call, code))
                time.sleep(3)
                fiu_control(box, "disable name=%s" % call)
                # No child left unreaped, no descriptor left open, the loops on.
                self.process.quiet(descriptors)
                self.assertEqual(self.process.num_threads(), threads)
                self.assert_answers()


if __name__ == "__main__":
    main()
