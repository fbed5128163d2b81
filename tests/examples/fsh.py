"""Drives the example fsh through a pseudo-terminal."""

import os
import pty
import re
import select
import signal
import subprocess
import sys
import termios
import time

PATIENCE = 60
PROMPT = "fsh$ "
failures = 0


def expect(what, passed):
    global failures
    if not passed:
        failures += 1
        print("FAILED:", what)


def wait_until(what, condition):
    """For what becomes true soon but tells nobody."""
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"FAILED: waited in vain for {what}")
        time.sleep(0.02)


class Session:
    """A program on a terminal of its own."""

    def __init__(self, *command):
        self.pid, self.master = pty.fork()
        if self.pid == 0:
            os.execv(command[0], command)
        os.set_inheritable(self.master, False)
        self.unread = ""

    def comes(self, pattern, patience):
        """The match of a pattern in what comes through the terminal in time; what came before it is dropped."""
        end = time.monotonic() + patience
        while True:
            match = re.search(pattern, self.unread)
            if match:
                self.unread = self.unread[match.end() :]
                return match
            ready, _, _ = select.select([self.master], [], [], max(0, end - time.monotonic()))
            if not ready:
                return None
            try:
                self.unread += os.read(self.master, 4096).decode()
            except OSError:
                return None

    def read_until(self, pattern):
        match = self.comes(pattern, PATIENCE)
        if not match:
            sys.exit(f"FAILED: waited in vain for {pattern!r} in {self.unread!r}")
        return match

    def prompt(self):
        self.read_until(re.escape(PROMPT))

    def type(self, keys):
        os.write(self.master, keys.encode())

    def run(self, line):
        """What a command of one line says."""
        self.type(line + "\n")
        self.read_until(re.escape(line) + "\r\n")
        return self.read_until(f"(?s)(.*?){re.escape(PROMPT)}").group(1).replace("\r\n", "\n")

    def foreground(self):
        return os.tcgetpgrp(self.master)

    def start(self, line):
        """Starts a command in the foreground and answers its group."""
        self.type(line + "\n")
        self.read_until(re.escape(line) + "\r\n")
        wait_until("the job's turn at the terminal", lambda: self.foreground() != self.pid)
        group = self.foreground()
        # A Ctrl-Z that comes before a job is continued would be lost.
        wait_until("the job to run", lambda: not members(group, "T"))
        return group

    def shell_has_terminal(self, when):
        expect(f"the shell has the terminal {when}", self.foreground() == self.pid)

    def local_modes(self):
        return termios.tcgetattr(self.master)[3] & (termios.ICANON | termios.ECHO)

    def status(self):
        """How the program ended; what was said until then is unread."""
        end = time.monotonic() + PATIENCE
        while select.select([self.master], [], [], max(0, end - time.monotonic()))[0]:
            try:
                self.unread += os.read(self.master, 4096).decode()
            except OSError:
                os.close(self.master)
                return os.waitstatus_to_exitcode(os.waitpid(self.pid, 0)[1])
        sys.exit("FAILED: the program does not end")


def processes(states):
    """The group of each process that is in one of some states."""
    found = {}
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/stat", encoding="latin-1") as file:
                state, _, group = file.read().rpartition(")")[2].split()[:3]
        except (FileNotFoundError, ProcessLookupError):
            continue
        if state in states:
            found[int(name)] = int(group)
    return found


def members(group, states="RSDTtI"):
    """The processes of a group that have not ended."""
    return [process for process, its_group in processes(states).items() if its_group == group]


def wait_until_gone(group):
    wait_until("the end of a group", lambda: not members(group))


def test_commands(shell):
    expect("a command's output", shell.run("echo he''llo | tr a-z A-Z") == "HELLO\n")
    expect("an empty line", shell.run("") == "")
    expect("a syntax error is told", "syntax error" in shell.run("echo |;"))
    expect("and is status 2", shell.run("echo $?") == "2\n")
    expect("an unknown command is told", "no-such-command: not found" in shell.run("no-such-command"))
    shell.type("echo 'first\n")
    shell.read_until("\r\n> ")
    shell.type("second' |\n")
    shell.read_until("\r\n> ")
    expect("three lines are one command", shell.run("tr a-z A-Z") == "FIRST\nSECOND\n")
    shell.shell_has_terminal("after commands")


def test_interrupt(shell):
    group = shell.start("sleep 100; echo no''t reached")
    expect("the job has a group of its own", members(group) == [group])
    shell.type("\x03")
    said = shell.read_until(f"(?s)(.*?){re.escape(PROMPT)}").group(1)
    expect("Ctrl-C ends the line", "not reached" not in said)
    wait_until_gone(group)
    shell.shell_has_terminal("after Ctrl-C")
    expect("its status is 130", shell.run("echo $?") == "130\n")
    usual = subprocess.run(["ls", "/proc/self/fd"], close_fds=False, capture_output=True, text=True, check=True).stdout
    expect("the shell's own descriptors are not for commands", shell.run("ls -1 /proc/self/fd | cat") == usual)

    group = shell.start("sleep 100")
    shell.type("\x1c")
    expect("Ctrl-\\ is told", "Killed by signal 3" in shell.read_until(r"(?s)(.*?)fsh\$ ").group(1))
    wait_until_gone(group)

    shell.type("\x03")
    shell.type("\x1c")
    shell.type("\x1a")
    expect("the keys do the shell itself no harm", shell.run("echo al''ive").endswith("alive\n"))


def test_pipeline(shell):
    group = shell.start("sleep 100 | sleep 101 | sleep 102")
    wait_until("three processes in one group", lambda: len(members(group)) == 3)
    shell.type("\x03")
    shell.prompt()
    wait_until_gone(group)
    shell.shell_has_terminal("after a pipeline")


def test_stop_and_continue(shell):
    group = shell.start("sleep 100")
    shell.type("\x1a")
    expect("Ctrl-Z is told", shell.read_until(r"(?s)(.*?)fsh\$ ").group(1).count("[1] Stopped") == 1)
    shell.shell_has_terminal("after Ctrl-Z")
    expect("the job is still there", members(group) == [group])
    expect("its status is 128 and the signal", shell.run("echo $?") == f"{128 + signal.SIGTSTP}\n")
    expect("jobs shows it", re.fullmatch(r"\[1\] Stopped +sleep 100\n", shell.run("jobs")))
    expect("fg continues it in its group", shell.start("fg") == group)
    shell.type("\x1a")
    shell.read_until(r"\[1\] Stopped")
    shell.prompt()
    shell.start("fg %1")
    shell.type("\x03")
    shell.prompt()
    wait_until_gone(group)
    expect("jobs shows it no more", shell.run("jobs") == "")
    expect("fg has none to continue", "no such job" in shell.run("fg"))
    expect("and fails", shell.run("echo $?") == "1\n")

    shell.start("sleep 100")
    shell.type("\x1a")
    shell.prompt()
    expect("bg continues it", re.fullmatch(r"\[1\] Running +sleep 100\n", shell.run("bg")))
    shell.shell_has_terminal("after bg")
    expect("jobs shows it running", "[1] Running" in shell.run("jobs"))
    shell.start("fg")
    shell.type("\x03")
    shell.prompt()


def test_background(shell):
    said = shell.run("sleep 100 &")
    expect("a background job is told", re.fullmatch(r"\[1\] \d+\n", said))
    group = int(said.split()[1])
    shell.shell_has_terminal("with a background job")
    expect("it has its own group", members(group) == [group])
    expect("$! is its process", shell.run("echo $!") == f"{group}\n")
    second = shell.run("true &")
    expect("a second is number 2", second.startswith("[2] "))
    # How it ended is told at the next prompt, and it is no job any more then.
    wait_until_gone(int(second.split()[1]))
    shell.run("")
    expect("wait gives a job's status", re.search(r"\n6\n", shell.run("sh -c 'exit 6' & wait $!; echo $?")))
    os.kill(group, signal.SIGTERM)
    wait_until("the end of the job", lambda: not members(group))
    shell.type("\n")
    shell.read_until(r"\[1\] Killed by signal 15 +sleep 100")
    shell.prompt()
    expect("it is told once", shell.run("jobs") == "")

    # It may have ended before the next prompt.
    said = [shell.run("sh -c 'exit 4' &")]
    wait_until_gone(int(said[0].split()[1]))
    said.append(shell.run(""))
    told = re.findall(r"\[1\] Exit 4 +sh -c 'exit 4'\n", "".join(said))
    expect("how a job ended is told once", len(told) == 1)

    said = shell.run("cat &")
    group = int(said.split()[1])
    wait_until("cat to be stopped", lambda: "Stopped" in shell.run("jobs"))
    shell.start("fg")
    shell.type("to cat\n")
    shell.read_until("to cat\r\nto cat\r\n")
    shell.type("\x04")
    shell.prompt()
    shell.shell_has_terminal("after cat")


def test_interrupted_wait(shell):
    group = int(shell.run("sleep 100 &").split()[1])
    shell.type("echo now w''ait; wait; echo no''t reached\n")
    shell.read_until("now wait\r\n")
    wait_until("the end of echo", lambda: shell.foreground() == shell.pid)
    # Whether the shell waits already cannot be seen from here. The key discards what is on its way to the terminal,
    # so it is not pressed in haste.
    for _ in range(20):
        shell.type("\x03")
        if shell.comes(re.escape(PROMPT), PATIENCE / 20):
            break
    said = shell.run("echo status $?")
    expect("Ctrl-C ends the waiting", said.endswith("status 130\n"))
    expect("but not the job", members(group) == [group])
    os.kill(group, signal.SIGKILL)
    expect("wait answers how it ended", shell.run("wait %1; echo $?").endswith("137\n"))
    shell.run("")


def test_modes(shell):
    usual = shell.local_modes()
    changing = "sh -c 'stty -echo -icanon; exec sleep 100'"
    shell.start(changing)
    wait_until("other modes", lambda: shell.local_modes() == 0)
    shell.type("\x1a")
    shell.prompt()
    expect("the shell's modes are back after Ctrl-Z", shell.local_modes() == usual)
    shell.start("fg")
    wait_until("the job's modes", lambda: shell.local_modes() == 0)
    shell.type("\x03")
    shell.prompt()
    expect("the shell's modes are back after Ctrl-C", shell.local_modes() == usual)
    # A command that ends by itself may set them for good.
    shell.run("stty -echo")
    expect("stty lasts", shell.local_modes() == usual & ~termios.ECHO)
    shell.type("stty echo\n")
    shell.prompt()
    expect("stty lasts again", shell.local_modes() == usual)


program = sys.argv[1]
session = Session(program)
session.prompt()
for test in (
    test_commands,
    test_interrupt,
    test_pipeline,
    test_stop_and_continue,
    test_background,
    test_interrupted_wait,
    test_modes,
):
    test(session)
session.type("exit 7\n")
expect("exit ends it with its status", session.status() == 7)

session = Session(program)
session.prompt()
session.run("sh -c 'exit 5'")
session.type("\x04")
expect("the end of the input ends it with the last status", session.status() == 5)

# The terminal goes back to the group that had it: the program that started the shell can read again.
session = Session("/bin/sh", "-c", '"$1"; echo "en""ded $?"; read -r line; echo "got $line"', "sh", program)
session.prompt()
expect("the shell leads a group of its own", session.foreground() != session.pid)
session.type("exit 3\n")
session.read_until("ended 3")
session.shell_has_terminal("after a shell inside it")
session.type("a line\n")
session.read_until("got a line")
expect("which reads on", session.status() == 0)

# Commands of a file at a terminal are no interactive shell's: no prompt, no groups.
session = Session(program, "-c", "sleep 0; echo $?")
expect("a text is run without a prompt", session.status() == 0 and session.unread == "0\r\n")

print("fsh controls jobs" if failures == 0 else f"{failures} failed")
sys.exit(failures != 0)
