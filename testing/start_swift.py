# OpenStack Swift, all of it in one process, with its S3 interface on ADDRESS:443.
# Usage: start_swift.py ADDRESS FOLDER BUILD-FOLDER MEMCACHED. FOLDER holds server.crt and server.key, and gets access.log:
# a line of JSON for each request and, at the end (SIGTERM), for each object in the bucket's listing.
# SIGHUP restarts it.
import array
import json
import os
import signal
import subprocess
import sys
import tempfile

from swift.common import utils

utils.eventlet_monkey_patch()
import eventlet  # noqa: E402
from eventlet import wsgi  # noqa: E402
from swift.common.ring import RingData  # noqa: E402
from swift.common.storage_policy import POLICIES  # noqa: E402
from swift.common.wsgi import loadapp, make_pre_authed_request  # noqa: E402

address, folder, build, memcached = sys.argv[1:]
PORTS = {"account": 6201, "container": 6202, "object": 6203, "proxy": 443}
CONFIGURATION = """
[DEFAULT]
swift_dir = {folder}
devices = {disk}
mount_check = false
fallocate_reserve = 0
container_update_timeout = 60
conn_timeout = 60
node_timeout = 120
[pipeline:main]
pipeline = {filters} {kind}-server
[app:{kind}-server]
use = egg:swift#{kind}
account_autocreate = true
[filter:cache]
use = egg:swift#memcache
memcache_servers = {address}:11211
[filter:s3api]
use = egg:swift#s3api
[filter:tempauth]
use = egg:swift#tempauth
user_dumps_device = word .admin
"""


def place_for_objects():
    """A folder whose files take user attributes, which a tmpfs of Linux before 6.6 does not."""
    place = folder + "/disk"
    os.makedirs(place + "/d1", exist_ok=True)
    try:
        os.setxattr(place, "user.swift", b"1")
    except OSError:
        place = os.environ.setdefault("SWIFT_DISK", tempfile.mkdtemp(prefix="swift-", dir=build))
        os.makedirs(place + "/d1", exist_ok=True)
    return place


def log(**entry):
    with open(folder + "/access.log", "a") as file:
        file.write(json.dumps(entry) + "\n")


def logged(app):
    def call(environ, start_response):
        body = environ["wsgi.input"]

        def start(status, headers, *rest):
            log(method=environ["REQUEST_METHOD"], status=int(status[:3]),
                url="https://" + environ["HTTP_HOST"] + environ["RAW_PATH_INFO"],
                size=str(body.position), type=environ.get("CONTENT_TYPE"))
            return start_response(status, headers, *rest)
        return app(environ, start)
    return call


def serve(kind):
    filters = "cache s3api tempauth" if kind == "proxy" else ""
    path = f"{folder}/{kind}.conf"
    with open(path, "w") as file:
        file.write(CONFIGURATION.format(kind=kind, filters=filters, folder=folder, disk=disk, address=address))
    app = loadapp(path)
    listener = eventlet.listen((address, PORTS[kind]))
    if kind == "proxy":
        listener = eventlet.wrap_ssl(listener, certfile=folder + "/server.crt", keyfile=folder + "/server.key",
                                     server_side=True)
    eventlet.spawn(wsgi.server, listener, logged(app) if kind == "proxy" else app, open(os.devnull, "w"))
    return app


def call(method, path):
    environ = {"swift.cache": None, "HTTP_HOST": address}
    return make_pre_authed_request(environ, method, "/v1/AUTH_dumps/dumps" + path).get_response(proxy)


def stored_file(name):
    place = f"{disk}/d1/objects/0/*/" + utils.hash_path("AUTH_dumps", "dumps", name) + "/*.data"
    return subprocess.run("echo " + place, shell=True, capture_output=True, text=True).stdout.strip()


disk = place_for_objects()
memory = subprocess.Popen([memcached, "-u", "root", "-l", address])
for kind in ["account", "container", "object"]:
    device = dict(id=0, zone=1, weight=1, ip=address, port=PORTS[kind], device="d1", meta="")
    device.update(replication_ip=address, replication_port=PORTS[kind])
    RingData([array.array("H", [0])], [device], 32).save(f"{folder}/{kind}.ring.gz")
for kind in PORTS:
    proxy = serve(kind)
with open(folder + "/pid", "w") as file:
    file.write(str(os.getpid()))
print("bucket", call("PUT", "").status, flush=True)

wanted = []
for number in [signal.SIGTERM, signal.SIGHUP]:
    signal.signal(number, lambda number, _: wanted.append(number))
while not wanted:
    eventlet.sleep(0.1)
if wanted[0] == signal.SIGHUP:
    os.execv(sys.executable, [sys.executable, *sys.argv])
for entry in json.loads(call("GET", "?format=json").body):
    log(method="listed", url=entry["name"], type=entry["content_type"], file=stored_file(entry["name"]))
