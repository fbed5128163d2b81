"""Drives the example raw through a pseudo-terminal."""

import os
import pty
import signal
import subprocess
import sys
import termios
import time

failures = 0
environment = dict(os.environ)
# With a second argument, a library to preload; the loader takes no blanks in its name, but in its search path.
if len(sys.argv) > 2:
    directory, name = os.path.split(sys.argv[2])
    environment |= {"LD_LIBRARY_PATH": directory, "LD_PRELOAD": name}
    environment |= {"ASAN_OPTIONS": "verify_asan_link_order=0:detect_leaks=0"}


def expect(what, passed):
    global failures
    if not passed:
        failures += 1
        print("FAILED:", what)


def read_until(master, text):
    """What came through the terminal up to a text."""
    seen = b""
    while text not in seen:
        seen += os.read(master, 4096)
    return seen


def run(end, typed=b""):
    """Starts raw on a terminal of its own, where something may have been typed, lets `end` end it, and answers its
    status and the modes around it."""
    master, slave = pty.openpty()
    os.write(master, typed)
    read_until(master, typed)  # what is not echoed yet may come behind the flushing
    before = termios.tcgetattr(slave)
    program = subprocess.Popen(
        [sys.argv[1]], stdin=slave, stdout=slave, stderr=slave, start_new_session=True, env=environment
    )
    expect("what was typed before is dropped", b"key x" not in read_until(master, b"press keys"))
    during = termios.tcgetattr(slave)
    end(master, program)
    status = program.wait(timeout=20)
    after = termios.tcgetattr(slave)
    os.close(master)
    os.close(slave)
    return status, before, during, after


def press_keys(master, program):
    for key, shown in ((b"a", b"key a 97"), (b"\x1b", b"key 27"), (b"\x00", b"key 0"), (b"\xe9", b"key 233")):
        os.write(master, key)
        expect(f"{key!r} is shown", shown in read_until(master, b"\n" if not shown else shown))
    os.write(master, b"q")


status, before, during, after = run(press_keys)
expect("q ends with status 0", status == 0)
expect("keys come one by one", not during[3] & termios.ICANON)
expect("keys are not echoed", not during[3] & termios.ECHO)
expect("the modes are as before", after == before)
expect("the terminal was another before", before != during)


def press_q(master, program):
    os.write(master, b"q")
    expect("what was typed before is dropped", b"key x" not in read_until(master, b"key q 113"))


run(press_q, b"x")

for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGQUIT):
    status, before, during, after = run(lambda master, program: program.send_signal(number))
    expect(f"{number.name} ends it with {128 + number}", status == 128 + number)
    expect(f"{number.name} leaves the modes as before", after == before and during != before)

refused = subprocess.run([sys.argv[1]], stdin=subprocess.DEVNULL, capture_output=True, timeout=20)
expect("without a terminal it says so", refused.returncode == 1 and b"no terminal" in refused.stderr)

print("raw keeps terminals" if failures == 0 else f"{failures} failed")
sys.exit(failures != 0)
