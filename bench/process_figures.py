"""What a process with a Manager costs while nothing happens, seen from outside; and clients of the peers beside it."""
import os
import subprocess
import time
from contextlib import ExitStack, contextmanager
from pathlib import Path

LIBRARIES = ["src/libkazwifi.so", "platform/dbus/libkazdbus.so", "platform/metrics/libkazmetrics.so",
             "platform/common/libkazcommon.so"]
NETWORKS = 50


@contextmanager
def running(*command, **environment):
    """A program that prints one line when it is ready, which is passed on; it ends with the block."""
    process = subprocess.Popen(list(map(str, command)), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                               env={**os.environ, **environment})
    try:
        yield process.pid, process.stdout.readline().strip()
    finally:
        process.terminate()
        process.wait()


def tasks(pid):
    return list(Path(f"/proc/{pid}/task").iterdir())


def wake_ups(pid):
    """Times a thread of the process went to sleep, which is as often as one woke up."""
    lines = (line for task in tasks(pid) for line in (task / "status").read_text().splitlines())
    return sum(int(line.split()[1]) for line in lines if line.startswith("voluntary_ctxt_switches"))


def processor_ns(pid):
    return sum(int((task / "schedstat").read_text().split()[0]) for task in tasks(pid))


def private_kilobytes(pid):
    lines = Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
    return next(int(line.split()[1]) for line in lines if line.startswith("Private_Dirty:"))


def start(stack, build, program, networks):
    """The process's id, and how many kB were its own when its main() began."""
    programs = build / "bench/whole_process"
    _, address = stack.enter_context(running(programs / "bench_world", networks or -1))
    pid, ready = stack.enter_context(running(programs / program, networks, DBUS_SYSTEM_BUS_ADDRESS=address))
    return pid, int(ready.split()[1])


def clients(build, seconds):
    """All at the same time, each with a bus of its own: they do nothing that could disturb the others."""
    cases = [("libkazwifi, attached", "kazwifi_client", NETWORKS), ("libkazwifi, detached", "kazwifi_client", 0),
             ("GDBus", "gdbus_client", NETWORKS), ("QtDBus", "qtdbus_client", NETWORKS)]
    with ExitStack() as stack:
        started = [(who, *start(stack, build, program, networks)) for who, program, networks in cases]
        time.sleep(3)  # what was begun comes to its end
        before = [(wake_ups(pid), processor_ns(pid)) for _, pid, _ in started]
        time.sleep(seconds)
        return [{"benchmark": "idle", "who": who, "seconds": seconds, "wake_ups": wake_ups(pid) - wakes,
                 "cpu_us": (processor_ns(pid) - spent) / 1000, "threads": len(tasks(pid)),
                 "descriptors": len(os.listdir(f"/proc/{pid}/fd")) - 3, "private_kilobytes_grown": private_kilobytes(pid) - kilobytes}
                for (who, pid, kilobytes), (wakes, spent) in zip(started, before)]


def sizes(build):
    figures = []
    for library in LIBRARIES:
        stripped = build / "results/stripped.so"
        subprocess.run(["strip", "-o", stripped, build / library], check=True)
        text, data, bss = subprocess.run(["size", stripped], check=True, text=True, stdout=subprocess.PIPE) \
            .stdout.splitlines()[1].split()[:3]
        figures.append({"benchmark": "size", "who": Path(library).name, "file": stripped.stat().st_size,
                        "text": int(text), "data": int(data) + int(bss)})
        stripped.unlink()
    return figures
