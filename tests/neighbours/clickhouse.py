"""Two ClickHouse servers on loopback, which are the shards of one table."""

import contextlib
import pathlib
import shutil
import socket
import subprocess
import time

CONFIG = """<yandex>
<logger><level>warning</level><log>{folder}/log</log><errorlog>{folder}/errors</errorlog></logger>
<tcp_port>{port}</tcp_port><listen_host>127.0.0.1</listen_host>
<path>{folder}/data/</path><tmp_path>{folder}/tmp/</tmp_path>
<users_config>{folder}/users.xml</users_config>
<default_profile>default</default_profile><default_database>default</default_database>
<mark_cache_size>100000000</mark_cache_size>
<remote_servers><fleet>{shards}</fleet></remote_servers>
</yandex>"""
SHARD = "<shard><replica><host>127.0.0.1</host><port>{}</port></replica></shard>"
USERS = """<yandex><profiles><default/></profiles><quotas><default/></quotas><users><default>
<password></password><networks><ip>127.0.0.1</ip></networks>
<profile>default</profile><quota>default</quota></default></users></yandex>"""


def free_port():
    with socket.socket() as found:
        found.bind(("127.0.0.1", 0))
        return found.getsockname()[1]


def query(port, text, data=None):
    """What a server answers, as lines of fields."""
    done = subprocess.run(["clickhouse-client", "--port", str(port), "--query", text,
                           "--input_format_skip_unknown_fields", "1"],
                          input=data, capture_output=True, check=False, timeout=60)
    assert done.returncode == 0, done.stderr.decode()
    return [line.split("\t") for line in done.stdout.decode().splitlines()]


@contextlib.contextmanager
def servers(folder):
    """Ports of two servers that run until the end of the block."""
    ports = [free_port(), free_port()]
    shards = "".join(map(SHARD.format, ports))
    running = []
    try:
        for port in ports:
            home = pathlib.Path(folder, f"server{port}")
            home.mkdir()
            (home / "users.xml").write_text(USERS)
            (home / "config.xml").write_text(CONFIG.format(folder=home, port=port, shards=shards))
            running.append(subprocess.Popen(
                [shutil.which("clickhouse-server", path="/usr/sbin:/usr/bin"),
                 f"--config-file={home}/config.xml"], cwd=home, stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL))
        for port in ports:
            wait_for(port)
        yield ports
    finally:
        for process in running:
            process.kill()
            process.wait()


def wait_for(port):
    for _ in range(300):
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
            return
        except OSError:
            time.sleep(0.1)
    raise AssertionError("a server did not start")
