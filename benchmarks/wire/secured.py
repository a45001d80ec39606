"""The price of TLS: our host beside nginx's fixed answer, with the same key."""

import base64
import os
import shutil
import socket
import subprocess
import tempfile
import threading
import time
import urllib.request
from pathlib import Path

from servers import PROFILES, OurHost

NGINX = shutil.which("nginx", path=os.environ["PATH"] + ":/usr/sbin")
CONFIGURATION = """daemon off; master_process off; pid {folder}/pid; error_log stderr crit; events {{ }}
http {{
  access_log off; client_body_temp_path {folder}; proxy_temp_path {folder}; fastcgi_temp_path {folder};
  uwsgi_temp_path {folder}; scgi_temp_path {folder};
  server {{
    listen 127.0.0.1:{port} ssl; ssl_certificate {key}.pem; ssl_certificate_key {key}.key;
    ssl_protocols TLSv1.2 TLSv1.3; ssl_session_tickets off;
    location / {{ return 200; }}
  }}
}}
"""
SETTINGS = """<settings><server>
<endpoint name="kestrile-server"{files}/>{more}</server></settings>"""
USER = ("ann", "secret")
PASSWORD = "Authorization: Basic " + base64.b64encode(":".join(USER).encode()).decode()
KEYS = {"EC P-256": ("ec", "-pkeyopt", "ec_paramgen_curve:P-256"), "RSA 2048": ("rsa:2048",)}


def make_key(folder, kind):
    """The files of a key and its certificate, without their endings."""
    key = folder / kind.split()[0]
    subprocess.run(["openssl", "req", "-x509", "-newkey", *KEYS[kind], "-nodes", "-days", "60", "-subj", "/CN=camera",
                    "-keyout", f"{key}.key", "-out", f"{key}.pem"], check=True, capture_output=True)
    return key


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as taken:
        return taken.getsockname()[1]


class Nginx:
    name = "nginx"

    def __init__(self, key):
        self.folder = Path(tempfile.mkdtemp(prefix="varlo-benchmark-"))
        self.port = free_port()
        (self.folder / "nginx.conf").write_text(CONFIGURATION.format(folder=self.folder, port=self.port, key=key))
        self.process = subprocess.Popen([NGINX, "-e", "stderr", "-p", self.folder, "-c", self.folder / "nginx.conf"])
        for _ in range(1000):
            try:
                return socket.create_connection(("127.0.0.1", self.port)).close()
            except ConnectionRefusedError:
                time.sleep(0.01)
        raise RuntimeError("nginx doesn't listen")

    def end(self):
        self.process.kill()
        self.process.wait()
        shutil.rmtree(self.folder)


class SecuredHost(OurHost):
    """With the key, users and what else the settings say; without a key it speaks plain HTTP."""

    def __init__(self, key=None, password=False, more=""):
        self.server = {"files": f' certificate="{key}.pem" privateKey="{key}.key"' if key else "",
                       "more": more + ("<users>users</users>" if password else "")}
        super().__init__(PROFILES)

    def start(self):
        hashed = subprocess.run(["openssl", "passwd", "-6", USER[1]], check=True, capture_output=True, text=True)
        (self.folder / "users").write_text(f"{USER[0]}:{hashed.stdout}")
        self.settings.write_text(SETTINGS.format(**self.server))
        return super().start()


class Scraper(threading.Thread):
    """Asks for the metrics of a host once a second, until it is closed."""

    def __init__(self, host):
        super().__init__()
        line = next(line for line in host.errors if line.startswith("metrics on "))
        self.url = line.removeprefix("metrics on ") + "metrics"
        self.ended = threading.Event()
        self.start()

    def scrape(self):
        with urllib.request.urlopen(self.url, timeout=10) as answer:
            return answer.read()

    def run(self):
        while not self.ended.wait(1):
            self.scrape()

    def close(self):
        self.ended.set()
        self.join()


def processor_micros(process):
    """The processor time that the threads of a process have taken."""
    return sum(int(task.read_text().split()[0])
               for task in Path(f"/proc/{process.pid}/task").glob("*/schedstat")) / 1000
