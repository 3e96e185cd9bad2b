"""oledctl serve against what reaches it beyond loopback: a scrape token
that cannot change boxes, and slow connections that cannot hold it."""

import os
import socket
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

from harness import BIN_DIR, E2ETest, eventually, main

PORT = 16180


class ServeLimits(E2ETest):
    def request(self, path, token, header="Authorization", data=None):
        value = "Bearer " + token if header == "Authorization" else token
        req = urllib.request.Request("http://127.0.0.1:%d%s" % (PORT, path), data=data, headers={header: value})
        with self.netns.entered():
            try:
                with urllib.request.urlopen(req, timeout=5) as answer:
                    return answer.status
            except urllib.error.HTTPError as refused:
                return refused.code

    def test_the_scrape_token_only_scrapes_and_slow_clients_hold_nothing(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        tokens = {}
        for name in ("session", "scrape"):
            tokens[name] = "%s-token-0123456789" % name
            with open(os.path.join(folder, name), "w") as f:
                f.write(tokens[name])
        os.chmod(os.path.join(folder, "session"), 0o600)
        server = subprocess.Popen(self.netns.exec_args(
            [os.path.join(BIN_DIR, "oledctl"), "serve", "--token-file", os.path.join(folder, "session"),
             "--metrics-token-file", os.path.join(folder, "scrape"), "--timeout", "0.3"]),
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        probe = "/probe?target=10.0.0.5"
        eventually(lambda: self.request(probe, tokens["scrape"]) == 200, 10, "a scrape with the scrape token")
        self.assertEqual(self.request(probe, tokens["session"]), 200)
        self.assertEqual(self.request(probe, "wrong-token-0123456789"), 401)
        body = b'{"boxes": ["10.0.0.5"], "items": ["cpu=0"]}'
        self.assertEqual(self.request("/api/set", tokens["scrape"], "X-Fleet-Token", body), 403)
        self.assertEqual(self.request("/api/boxes", tokens["scrape"], "X-Fleet-Token"), 403)

        # 500 connections that send a header line every 4 s.
        slow = []
        with self.netns.entered():
            for _ in range(500):
                sock = socket.create_connection(("127.0.0.1", PORT))
                sock.sendall(b"GET /probe HTTP/1.1\r\nHost: 127.0.0.1\r\n")
                slow.append(sock)
        self.addCleanup(lambda: [sock.close() for sock in slow])
        time.sleep(1.5)
        started = time.monotonic()
        self.assertEqual(self.request(probe, tokens["scrape"]), 200)
        self.assertLess(time.monotonic() - started, 2.0)
        server.kill()
        self.assertIn("scrape", server.communicate()[1])  # its file is readable by others


if __name__ == "__main__":
    main()
