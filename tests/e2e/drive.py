#!/usr/bin/env python3
"""End-to-end test of KESTA DEMO, driven from outside the process.

Checks the layout that `cmake --install` makes, then lays out a scratch
install of a copy of the program whose data tree lies in the build tree,
starts it under a private Xvfb server and uses it the way a person would:
mouse clicks on the windows, the keyboard only inside open menus (which grab
it) and on message boxes given the input focus first. Every step waits for
what the program shows or writes (windows by title, files on disk) instead of
sleeping for a fixed time.

Exit status: 0 passed, 1 failed, 77 skipped (no Xvfb or xdotool).
"""

import argparse
import os
import re
import select
import shutil
import stat
import subprocess
import sys
import time

SKIP = 77
TITLE = "KESTA DEMO"
IDLE_PAGE = "Select a new Domain Quiz or Exam from the file menu to begin"
DEFAULT_OPTIONS = b"1\r\n0\r\n0\r\n1\r\n30\r\n5"
DATA_DIRS = ["MORVO", "MORVO/KESTA", "MORVO/KESTA/All", "MORVO/KESTA/All/Log", "MORVO/KESTA/All/User"]
QUIZ_FILE = "e2e-quiz.kqb"
QUIZ_SECONDS = 4 * 90  # four questions at the default 1 min 30 s each
CORRECT = {1: "a", 2: "b", 3: "c", 4: "d"}  # answer of question record k in the quiz bank
SCREEN = (1280, 1024)
PARK = (SCREEN[0] - 4, SCREEN[1] - 4)  # a spot outside every window: no hover, no tool tip

# Pixel positions inside the main window (860 x 640, placed at its design size).
# The answer frame sits at a fixed distance above the status bar, so these hold
# as long as the status bar keeps its height with the default style and fonts.
MAIN_SIZE = (860, 640)
FILE_MENU = (20, 8)
BUTTON_ROW_Y = 540            # Previous / Next / Start buttons
OPTION_ROW_Y = 496            # answer buttons A to D
PREVIOUS_X, NEXT_X, START_X = 162, 334, 506
OPTION_X = {"a": 257, "b": 357, "c": 457, "d": 557}  # on each button's round indicator
# The results window (780 x 600) and the fixed-size confirmation dialogs (420 x 150).
CLOSE_EXPLANATION, RESULTS_EXIT = (289, 517), (289, 553)
DIALOG_SIZE = (420, 150)
DIALOG_OK, DIALOG_CANCEL = (140, 115), (280, 115)


def die_with_driver():
    """Run in each child: if the driver is killed (a CTest timeout), its X server and program go too."""
    try:
        import ctypes
        import signal
        ctypes.CDLL(None, use_errno=True).prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG
    except (OSError, AttributeError):
        pass


class Failure(Exception):
    pass


def log(message):
    print(f"[{time.monotonic() - START:6.2f}s] {message}", flush=True)


START = time.monotonic()


# --- the installed layout -------------------------------------------------

def check(condition, message):
    if not condition:
        raise Failure(message)


def check_install(args, scratch):
    """A real `cmake --install` of the main build, staged under DESTDIR."""
    destdir = os.path.join(scratch, "install-root")
    prefix = "/opt/kesta-e2e"
    env = dict(os.environ, DESTDIR=destdir)

    def install():
        done = subprocess.run([args.cmake, "--install", args.build_dir, "--prefix", prefix], env=env,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        check(done.returncode == 0, f"cmake --install failed:\n{done.stdout}")

    install()
    root = destdir + prefix
    program_dir = os.path.join(root, args.install_libdir, "kesta-demo")
    program = os.path.join(program_dir, "kesta-demo")
    check(os.path.isfile(program) and os.access(program, os.X_OK), f"no installed program at {program}")

    questions = os.path.join(program_dir, "Questions")
    banks = sorted(os.listdir(questions)) if os.path.isdir(questions) else []
    check(banks, f"no question files in {questions} beside the program")
    qbank = os.path.join(root, args.install_bindir, "kesta-qbank")
    check(os.access(qbank, os.X_OK), f"no installed kesta-qbank at {qbank}")
    for bank in banks:
        done = subprocess.run([qbank, "check", os.path.join(questions, bank)], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True)
        check(done.returncode == 0 and "Corrupt: no" in done.stdout,
              f"installed question file {bank} does not load:\n{done.stdout}")

    launcher = os.path.join(root, args.install_bindir, "kesta-demo")
    check(os.path.islink(launcher), f"launcher {launcher} is not a symbolic link")
    # Relative, so the staged tree still works once moved to its real place.
    check(not os.path.isabs(os.readlink(launcher)), f"launcher points to an absolute path: {os.readlink(launcher)}")
    check(os.path.realpath(launcher) == os.path.realpath(program),
          f"launcher resolves to {os.path.realpath(launcher)}, not to {program}")

    desktop = os.path.join(root, args.install_datadir, "applications", "kesta-demo.desktop")
    check(os.path.isfile(desktop), f"no desktop entry at {desktop}")
    entry = dict(line.split("=", 1) for line in open(desktop, encoding="utf-8").read().splitlines() if "=" in line)
    check(entry.get("Type") == "Application" and entry.get("Name") == TITLE, f"desktop entry: {entry}")
    check(entry.get("Exec", "").split()[:1] == [os.path.basename(launcher)],
          f"desktop entry starts {entry.get('Exec')!r}, not the launcher")
    icon = os.path.join(root, args.install_datadir, "icons", "hicolor", "scalable", "apps", entry.get("Icon", "") + ".svg")
    check(os.path.isfile(icon), f"desktop entry names icon {entry.get('Icon')!r}, not installed at {icon}")

    appdata = destdir + args.install_appdata
    for sub in DATA_DIRS:
        path = os.path.join(appdata, sub)
        check(os.path.isdir(path), f"data folder {path} not created")
        mode = stat.S_IMODE(os.stat(path).st_mode)
        check(mode == 0o777, f"data folder {path} has mode {mode:o}, not 777 (every user writes there)")
    options = os.path.join(appdata, "MORVO/KESTA/All/User/option.usr")
    check(open(options, "rb").read() == DEFAULT_OPTIONS, f"default options file wrong: {open(options, 'rb').read()!r}")
    check(stat.S_IMODE(os.stat(options).st_mode) & 0o666 == 0o666, "options file is not writable by every user")

    # Installing again (an upgrade) keeps the options a user has set.
    with open(options, "wb") as f:
        f.write(b"1\r\n0\r\n0\r\n2\r\n0\r\n7")
    install()
    check(open(options, "rb").read() == b"1\r\n0\r\n0\r\n2\r\n0\r\n7", "reinstalling replaced the user's options")
    with open(options, "wb") as f:
        f.write(DEFAULT_OPTIONS)
    log("installed layout checked")
    return os.path.join(appdata, "MORVO")


def lay_out(args, scratch, installed_tree):
    """The e2e copy of the program, laid out as an install lays it out."""
    prefix = os.path.join(scratch, "prefix")
    program_dir = os.path.join(prefix, "lib", "kesta-demo")
    os.makedirs(os.path.join(program_dir, "Questions"))
    shutil.copy2(args.program, os.path.join(program_dir, "kesta-demo"))
    for source in sorted(os.listdir(args.banks)):
        if source.endswith(".txt"):
            bank = os.path.join(program_dir, "Questions", source[:-4] + ".kqb")
            done = subprocess.run([args.qbank, "build", os.path.join(args.banks, source), "-o", bank],
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            check(done.returncode == 0, f"kesta-qbank build {source} failed:\n{done.stdout}")
    os.makedirs(os.path.join(prefix, "bin"))
    launcher = os.path.join(prefix, "bin", "kesta-demo")
    os.symlink("../lib/kesta-demo/kesta-demo", launcher)

    # The data tree the installer made, copied with its modes to where this copy looks.
    appdata = args.appdata
    os.makedirs(appdata, exist_ok=True)
    shutil.rmtree(os.path.join(appdata, "MORVO"), ignore_errors=True)
    shutil.copytree(installed_tree, os.path.join(appdata, "MORVO"))
    return launcher, os.path.join(appdata, "MORVO/KESTA/All")


# --- the X server and the windows -----------------------------------------

class Display:
    def __init__(self, scratch):
        self.scratch = scratch
        self.proc = None
        self.name = None

    def __enter__(self):
        read_end, write_end = os.pipe()
        self.proc = subprocess.Popen(
            # -noreset: by default the server resets when its last client leaves (the
            # program ending between two short xdotool calls), refusing connections meanwhile.
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{SCREEN[0]}x{SCREEN[1]}x24", "-nolisten", "tcp",
             "-noreset"],
            pass_fds=(write_end,), stdout=subprocess.DEVNULL, preexec_fn=die_with_driver,
            stderr=open(os.path.join(self.scratch, "xvfb.log"), "w"))
        os.close(write_end)
        number = b""
        deadline = time.monotonic() + 20
        while not number.endswith(b"\n"):
            ready, _, _ = select.select([read_end], [], [], max(0.0, deadline - time.monotonic()))
            chunk = os.read(read_end, 16) if ready else b""
            if not chunk:
                os.close(read_end)
                raise Failure("Xvfb did not start (see xvfb.log in the scratch folder)")
            number += chunk
        os.close(read_end)
        self.name = ":" + number.decode().strip()
        log(f"Xvfb on display {self.name}")
        return self

    def __exit__(self, *exc):
        if self.proc and self.proc.poll() is None:
            self.proc.terminate()
            try:
                self.proc.wait(5)
            except subprocess.TimeoutExpired:
                self.proc.kill()
                self.proc.wait()


class Program:
    """One run of the program and the ways a person acts on it."""

    def __init__(self, display, launcher, data_dir, scratch, run):
        self.display = display
        self.launcher = launcher
        self.data_dir = data_dir
        self.scratch = scratch
        self.run = run
        self.proc = None
        self.main = None
        self.env = {k: v for k, v in os.environ.items() if not k.startswith("QT_")}
        self.env.update(DISPLAY=display.name, QT_QPA_PLATFORM="xcb", NO_AT_BRIDGE="1",
                        XDG_RUNTIME_DIR=os.path.join(scratch, "runtime"))
        os.makedirs(self.env["XDG_RUNTIME_DIR"], mode=0o700, exist_ok=True)

    # files
    @property
    def page_path(self):
        return os.path.join(self.data_dir, "Log", "qtmp.htm")

    def user_file(self, name):
        return os.path.join(self.data_dir, "User", name)

    def page_stamp(self):
        try:
            st = os.stat(self.page_path)
            return (st.st_ino, st.st_mtime_ns, st.st_size)
        except FileNotFoundError:
            return None

    def page(self):
        try:
            return open(self.page_path, "rb").read().decode("utf-8", "replace")
        except FileNotFoundError:
            return ""

    # X
    def xdotool(self, *words, ok_codes=(0,)):
        done = subprocess.run(["xdotool", *map(str, words)], env=self.env, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True)
        if done.returncode not in ok_codes:
            raise Failure(f"xdotool {' '.join(map(str, words))} failed: {done.stderr.strip()}")
        return done.stdout

    def windows(self):
        """The program's visible top-level windows: id -> (title, x, y, width, height)."""
        if self.proc is None:
            return {}
        found = {}
        ids = self.xdotool("search", "--all", "--onlyvisible", "--pid", self.proc.pid, "--name", "", ok_codes=(0, 1))
        for wid in ids.split():
            try:
                name = self.xdotool("getwindowname", wid).rstrip("\n")
                geometry = dict(line.split("=", 1) for line in self.xdotool("getwindowgeometry", "--shell", wid).split())
            except Failure:
                continue  # closed meanwhile
            found[int(wid)] = (name, int(geometry["X"]), int(geometry["Y"]), int(geometry["WIDTH"]),
                               int(geometry["HEIGHT"]))
        return found

    def describe(self):
        lines = [f"  window {wid}: {w[0]!r} {w[3]}x{w[4]}+{w[1]}+{w[2]}" for wid, w in self.windows().items()]
        return "\n".join(lines) or "  (no windows)"

    def wait(self, what, probe, timeout=15.0, may_end=False):
        deadline = time.monotonic() + timeout
        while True:
            value = probe()
            if value:
                return value
            if not may_end and self.proc.poll() is not None:
                raise Failure(f"the program ended (status {self.proc.returncode}) while waiting for {what}")
            if time.monotonic() > deadline:
                raise Failure(f"timed out after {timeout:.0f}s waiting for {what}")
            time.sleep(0.05)

    def window_named(self, title, size=None, exclude=()):
        for wid, (name, _x, _y, width, height) in self.windows().items():
            if name == title and wid not in exclude and (size is None or (width, height) == size):
                return wid
        return None

    def wait_window(self, title, size=None, exclude=()):
        return self.wait(f"window {title!r}", lambda: self.window_named(title, size, exclude))

    def wait_gone(self, wid, what):
        self.wait(f"{what} to close", lambda: wid not in self.windows(), may_end=True)

    def click(self, wid, x, y):
        self.xdotool("mousemove", "--sync", "--window", wid, x, y, "click", "1")
        self.xdotool("mousemove", "--sync", *PARK)

    def confirm_box(self, title, exclude=()):
        """Confirms a message box with Return, after giving it the input focus."""
        box = self.wait_window(title, exclude=exclude)
        self.xdotool("windowfocus", "--sync", box)
        self.xdotool("key", "Return")
        self.wait_gone(box, f"message box {title!r}")

    def message_box(self):
        """A box titled like the main window (the program's own messages)."""
        return self.window_named(TITLE, exclude=(self.main,))

    # start and end
    def start(self):
        output = open(os.path.join(self.scratch, f"program-run{self.run}.log"), "w")
        self.proc = subprocess.Popen([self.launcher], env=self.env, stdout=output, stderr=subprocess.STDOUT,
                                     cwd=self.scratch, preexec_fn=die_with_driver)
        splash = self.wait("the splash window", lambda: next(iter(self.windows()), None))
        if self.windows().get(splash, ("",))[0] != TITLE:
            self.click(splash, 20, 20)  # a click dismisses the splash at once
        self.main = self.wait_window(TITLE, size=MAIN_SIZE)
        self.wait("the idle page", lambda: IDLE_PAGE in self.page())
        log(f"run {self.run}: main window up")

    def wait_exit(self):
        self.wait("the program to end", lambda: self.proc.poll() is not None, may_end=True)
        check(self.proc.returncode == 0, f"the program ended with status {self.proc.returncode}")

    def stop(self):
        if self.proc and self.proc.poll() is None:
            self.proc.kill()
            self.proc.wait()

    # menus: opened with the mouse; an open menu grabs the keyboard
    def menu(self, *keys):
        """Opens File and walks it with arrow keys; Return chooses the item."""
        for _attempt in range(3):
            before = set(self.windows())
            self.click(self.main, *FILE_MENU)
            try:
                self.wait("the File menu", lambda: set(self.windows()) - before, timeout=5)
                break
            except Failure:
                if set(self.windows()) - before:
                    break  # it opened late
                continue
        else:
            raise Failure("the File menu does not open")
        for key in keys:
            shown = len(self.windows())
            self.xdotool("key", key)
            if key == "Right":
                self.wait("a submenu", lambda: len(self.windows()) > shown, timeout=5)
        self.xdotool("key", "Return")

    def choose_quiz(self):
        # New Domain Quiz or Exam > Select Domain Quiz > the only quiz
        self.menu("Down", "Right", "Down", "Right")
        self.wait("the quiz's introduction page", lambda: "E2E-INTRO-QUIZ" in self.page())
        self.wait("the loading window to close", lambda: set(self.windows()) == {self.main})

    def save_progress_menu(self):
        # counted from the bottom: Exit, Options, Print Questions, Save ... Progress
        self.menu("Up", "Up", "Up", "Up")

    def exit_menu(self):
        self.menu("Up")

    # the test itself
    def shown_record(self):
        found = re.findall(r"E2E-Q(\d)", self.page())
        return int(found[0]) if len(found) == 1 else None

    def wait_new_page(self, stamp, what):
        self.wait(what, lambda: self.page_stamp() not in (None, stamp) and self.page())
        return self.page()

    def start_quiz(self):
        stamp = self.page_stamp()
        self.click(self.main, START_X, BUTTON_ROW_Y)
        self.confirm_box(TITLE, exclude=(self.main,))  # "The Domain Quiz will now begin..."
        self.wait_new_page(stamp, "the first question")
        started = time.monotonic()
        record = self.shown_record()
        check(record is not None, f"no question shown after the start:\n{self.page()}")
        return started, record

    def answer_and_next(self, letter, last=False):
        """Clicks an answer and Next (or Finish); returns the record shown next."""
        stamp = self.page_stamp()
        self.click(self.main, OPTION_X[letter], OPTION_ROW_Y)
        self.click(self.main, NEXT_X, BUTTON_ROW_Y)
        if last:
            return None
        def moved():
            if self.message_box():
                raise Failure(f"the answer click on {letter.upper()} did not register (the program asks for an "
                              "answer): the answer buttons are not where expected")
            return self.page_stamp() not in (None, stamp)
        self.wait("the next question", moved)
        record = self.shown_record()
        check(record is not None, f"no question page after Next:\n{self.page()}")
        return record


# --- checks of the files the program writes -----------------------------

def read_progress(path):
    """Splits a progress or score file into its three parts (CR LF between, none at the end)."""
    data = open(path, "rb").read()
    parts = data.split(b"\r\n")
    check(len(parts) == 3, f"{path}: expected three CR LF separated parts, got {data!r}")
    line1, line2, line3 = (p.decode("ascii") for p in parts)
    check(re.fullmatch(r"\d{12}", line1) is not None, f"{path}: line 1 is not 12 digits: {line1!r}")
    fields = {"hours": int(line1[0:2]), "minutes": int(line1[2:4]), "current": int(line1[4:7]),
              "highest": int(line1[7:10]), "seconds": int(line1[10:12])}
    check(re.fullmatch(r"(\d{3})*", line2) is not None, f"{path}: line 2 is not 3-digit numbers: {line2!r}")
    order = [int(line2[i:i + 3]) for i in range(0, len(line2), 3)]
    return data, fields, order, line3


def check_time_left(fields, elapsed, path):
    check(fields["minutes"] < 60 and fields["seconds"] < 60, f"{path}: minutes/seconds out of range: {fields}")
    left = fields["hours"] * 3600 + fields["minutes"] * 60 + fields["seconds"]
    # The countdown started at 4 x 90 s and ticks once a second.
    check(QUIZ_SECONDS - elapsed - 3 <= left <= QUIZ_SECONDS,
          f"{path}: {left}s left after {elapsed:.1f}s of a {QUIZ_SECONDS}s quiz: {fields}")
    return left


def check_user_data(program):
    path = program.user_file("usrdata.usr")
    check(os.path.isfile(path) and os.path.getsize(path) == 0, "usrdata.usr is not re-created empty after a save")


# --- the two runs ---------------------------------------------------------

def run_finished_quiz(program):
    """Take the whole quiz, finish, see the results, close them and exit."""
    program.start()
    program.choose_quiz()
    started, record = program.start_quiz()
    order, answers = [], []
    for position in range(1, 5):
        order.append(record)
        # Every answer right except for question 2, so the results have one page to show.
        letter = "a" if record == 2 else CORRECT[record]
        answers.append(letter)
        record = program.answer_and_next(letter, last=position == 4)
    elapsed = time.monotonic() - started
    check(sorted(order) == [1, 2, 3, 4], f"the four positions did not show four different questions: {order}")
    program.confirm_box("Save Score")
    results = program.wait_window("Results")
    page = program.wait("the review page", lambda: "Your answer:" in program.page() and program.page())
    log(f"run 1: finished, order {order}, answers {''.join(answers)}")

    # The one wrong answer, with the right one and its explanation.
    for expected in ("E2E-Q2", "Your answer: A", "The correct answer is: B", "Explanation: E2E-X2"):
        check(expected in page, f"results page lacks {expected!r}:\n{page}")
    check(page.startswith("<font size=5>\r\n"), f"page not wrapped in the default font size:\n{page!r}")
    check(not program.window_named(TITLE, size=MAIN_SIZE), "the main window stays visible beside the results")

    score = program.user_file(QUIZ_FILE + ".usr.score1")
    check(os.path.isfile(score), f"no score file {score}")
    _data, fields, saved_order, saved_answers = read_progress(score)
    check(fields["current"] == 5 and fields["highest"] == 5,
          f"score file: position/furthest should be 005/005 after finishing 4 questions: {fields}")
    check_time_left(fields, elapsed, score)
    check(saved_order == order, f"score file order {saved_order}, but the questions were shown in order {order}")
    check(saved_answers == "".join(answers), f"score file answers {saved_answers!r}, clicked {''.join(answers)!r}")
    check(not os.path.exists(program.user_file(QUIZ_FILE + ".usr")), "saving a score wrote the progress file")
    check_user_data(program)

    # Close the results: confirm, and the main window comes back idle.
    program.click(results, *CLOSE_EXPLANATION)
    dialog = program.wait_window("Exit Explanation Dialog", size=DIALOG_SIZE)
    program.click(dialog, *DIALOG_OK)
    program.wait_gone(results, "the results window")
    program.wait_window(TITLE, size=MAIN_SIZE)
    program.wait("the idle page again", lambda: IDLE_PAGE in program.page())

    log("run 1: results closed")

    # The score is listed under View Previous Scores and reopens in the results window.
    stamp = program.page_stamp()
    program.menu("Down", "Down", "Down", "Right")
    program.confirm_box("Open Existing Domain Quiz")
    results = program.wait_window("Results")
    page = program.wait_new_page(stamp, "the reopened score's review page")
    for expected in ("E2E-Q2", "Your answer: A", "The correct answer is: B"):
        check(expected in page, f"reopened score's page lacks {expected!r}:\n{page}")

    # Leaving from there, with no test running, asks nothing more.
    program.click(results, *RESULTS_EXIT)
    dialog = program.wait_window("Exit " + TITLE, size=DIALOG_SIZE)
    program.click(dialog, *DIALOG_OK)
    program.wait_exit()
    log("run 1: score reopened, program left")


def run_saved_progress(program, relaunch):
    """Answer two questions, save, leave without saving again, come back, restore."""
    program.start()
    program.choose_quiz()
    started, record = program.start_quiz()
    shown = [record]
    shown.append(program.answer_and_next("d"))
    shown.append(program.answer_and_next("b"))  # now at position 3

    progress = program.user_file(QUIZ_FILE + ".usr")
    program.save_progress_menu()
    program.confirm_box("Save Progress")  # shown once the file is written
    saved_by = time.monotonic()
    check(os.path.isfile(progress), f"no progress file {progress}")
    saved, fields, order, answers = read_progress(progress)
    check(fields["current"] == 3 and fields["highest"] == 3, f"progress file: expected position 3 of 3: {fields}")
    left = check_time_left(fields, saved_by - started, progress)
    check(len(order) == 4 and sorted(order) == [1, 2, 3, 4], f"progress file order is no permutation: {order}")
    check(order[:3] == shown, f"progress file order {order}, but positions 1-3 showed {shown}")
    check(answers == "db", f"progress file answers {answers!r}, clicked 'db'")
    check_user_data(program)
    saved_stat = os.stat(progress)
    log(f"run 2: progress saved: {saved!r}")

    # Exit; the program asks whether to save first: No.
    program.exit_menu()
    dialog = program.wait_window("Exit " + TITLE, size=DIALOG_SIZE)
    program.click(dialog, *DIALOG_OK)
    question = program.wait_window("Save Progress", size=DIALOG_SIZE)
    program.click(question, *DIALOG_CANCEL)
    program.wait_exit()
    check(open(progress, "rb").read() == saved and os.stat(progress).st_mtime_ns == saved_stat.st_mtime_ns,
          "answering No to the save question still wrote the progress file")
    log("run 2: left without saving again")

    # Start again and restore: Load Previous Domain Quiz or Exam > Load Domain Quiz > the quiz.
    program = relaunch()
    program.start()
    stamp = program.page_stamp()
    program.menu("Down", "Down", "Right", "Down", "Right")
    program.confirm_box("Load Existing Domain Quiz")
    restored = program.wait_new_page(stamp, "the restored question")
    restore_time = time.monotonic()
    # The restored page is question record 3, the saved position's number.
    check(program.shown_record() == 3, f"restore shows the wrong question:\n{restored}")
    check(open(progress, "rb").read() == saved, "restoring changed the progress file")

    # Back one position: the saved order decides the page.
    stamp = program.page_stamp()
    program.click(program.main, PREVIOUS_X, BUTTON_ROW_Y)
    program.wait_new_page(stamp, "the previous question")
    check(program.shown_record() == order[1], f"position 2 should show question {order[1]}:\n{program.page()}")

    # Saving now writes back what was restored: the answers, the order (with the
    # restored position pointing at the question it showed) and the running countdown.
    stamp = os.stat(progress).st_mtime_ns
    program.save_progress_menu()
    program.confirm_box("Save Progress")
    check(os.stat(progress).st_mtime_ns != stamp, "saving after the restore did not write the progress file")
    _data, fields2, order2, answers2 = read_progress(progress)
    check(fields2["current"] == 2 and fields2["highest"] == 3, f"after restore and Previous: {fields2}")
    expected_order = order[:2] + [3] + order[3:]
    check(order2 == expected_order, f"order after restore {order2}, expected {expected_order}")
    check(answers2 == answers, f"answers after restore {answers2!r}, saved {answers!r}")
    left2 = fields2["hours"] * 3600 + fields2["minutes"] * 60 + fields2["seconds"]
    check(left - (time.monotonic() - restore_time) - 3 <= left2 <= left,
          f"countdown not resumed from the saved {left}s: {left2}s")
    log(f"run {program.run}: restored and saved again: {open(progress, 'rb').read()!r}")

    program.exit_menu()
    dialog = program.wait_window("Exit " + TITLE, size=DIALOG_SIZE)
    program.click(dialog, *DIALOG_OK)
    question = program.wait_window("Save Progress", size=DIALOG_SIZE)
    program.click(question, *DIALOG_CANCEL)
    program.wait_exit()
    return program


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("build-dir", "program", "qbank", "banks", "appdata", "scratch", "install-appdata",
                 "install-bindir", "install-libdir", "install-datadir"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("--cmake", default="cmake")
    args = parser.parse_args()

    missing = [tool for tool in ("Xvfb", "xdotool") if shutil.which(tool) is None]
    if missing:
        print(f"SKIPPED: {' and '.join(missing)} not installed (apt-get install xvfb xdotool)")
        return SKIP

    scratch = os.path.abspath(args.scratch)
    shutil.rmtree(scratch, ignore_errors=True)
    os.makedirs(scratch)
    installed_tree = check_install(args, scratch)
    launcher, data_dir = lay_out(args, scratch, installed_tree)

    program = None
    with Display(scratch) as display:
        runs = iter(range(1, 10))

        def relaunch():
            nonlocal program
            program = Program(display, launcher, data_dir, scratch, next(runs))
            return program

        try:
            run_finished_quiz(relaunch())
            run_saved_progress(relaunch(), relaunch)
            error_log = os.path.join(data_dir, "Log", "ErrorLog.log")
            if os.path.exists(error_log):
                raise Failure(f"the program logged errors:\n{open(error_log).read()}")
        except Failure:
            if program is not None and program.proc is not None:
                print("windows at the failure:\n" + program.describe(), file=sys.stderr)
                if shutil.which("import"):
                    shot = os.path.join(scratch, "failure.png")
                    subprocess.run(["import", "-window", "root", shot], env=program.env,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                    print(f"screenshot: {shot}", file=sys.stderr)
                print(f"page file:\n{program.page()}", file=sys.stderr)
            for name in sorted(os.listdir(scratch)):
                if name.endswith(".log"):
                    text = open(os.path.join(scratch, name), errors="replace").read()[-2000:]
                    print(f"--- {name}:\n{text}", file=sys.stderr)
            raise
        finally:
            if program is not None:
                program.stop()
    log("passed")
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Failure as failure:
        print(f"FAILED: {failure}", file=sys.stderr)
        sys.exit(1)
