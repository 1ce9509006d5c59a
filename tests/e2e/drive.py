#!/usr/bin/env python3
# End-to-end test of KESTA DEMO, driven from outside through its accessibility tree.
#
# Checks what `cmake --install` lays out, then starts a copy of the program whose data tree lies in
# the build tree under a private Xvfb server and D-Bus session bus, finds its controls over AT-SPI
# by role and caption, as a screen reader does, and acts on them with their accessible actions.
# Every step waits for what the program shows or writes instead of sleeping for a fixed time.
#
# Arguments: NAME=VALUE pairs from CMake (see CMakeLists.txt). Exit status: 0 passed, 1 failed,
# 77 skipped (no Xvfb, D-Bus, AT-SPI bus or pyatspi).
import contextlib, ctypes, glob, importlib.util, os, re, shutil, signal, stat, subprocess, sys, time
from pathlib import Path

TITLE, EXIT, QUIZ, QUIZ_TITLE = "KESTA DEMO", "Exit KESTA DEMO", "e2e-quiz.kqb", "KESTA Quiz Demo - End to End"
IDLE_PAGE = "Select a new Domain Quiz or Exam from the file menu to begin"
# Per question 1 minute 30 seconds by default; a user's 2 minutes and a larger font, which the journeys then use.
DEFAULT_OPTIONS, USER_OPTIONS = b"1\r\n0\r\n0\r\n1\r\n30\r\n5", b"1\r\n0\r\n0\r\n2\r\n0\r\n7"


def check(condition, message):
    if not condition:
        raise AssertionError(message)
    return condition


def spawn(argv, **kwargs):  # a child that dies with the driver, even one killed by a CTest timeout (PR_SET_PDEATHSIG)
    return subprocess.Popen(argv, preexec_fn=lambda: ctypes.CDLL(None).prctl(1, signal.SIGKILL), **kwargs)


def run(*argv, **kwargs):
    done = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **kwargs)
    return check(done.returncode == 0, f"{' '.join(argv)} failed:\n{done.stdout}") and done.stdout


def install(a):  # a real `cmake --install`, checked; then the e2e program and banks take their place
    # Staged under DESTDIR with umask 0: no mode may come from the installer's umask.
    destdir, root = a["scratch"] + "/install-root", a["scratch"] + "/install-root/opt/kesta-e2e"
    cmake_install = lambda: run(a["cmake"], "--install", a["build_dir"], "--prefix", "/opt/kesta-e2e",
                                env=dict(os.environ, DESTDIR=destdir), preexec_fn=lambda: os.umask(0))
    cmake_install()
    bindir, share, program = f"{root}/{a['bindir']}", f"{root}/{a['datadir']}", f"{root}/{a['libdir']}/kesta-demo/"
    banks = glob.glob(program + "Questions/*.kqb")
    check(banks and all("Corrupt: no" in run(bindir + "/kesta-qbank", "check", bank) for bank in banks),
          f"the question files beside the installed program do not load: {banks}")
    # Only the data tree is shared: nobody but the owner may change the program or its questions. A path missing
    # from the tree fails its lstat.
    data = Path(destdir + a["appdata_dir"], "MORVO/KESTA/All")
    options = data / "User/option.usr"
    modes = {p: 0o755 if os.path.isdir(p) else 0o777 if os.path.islink(p) else 0o644
             for folder, _, names in os.walk(root) for p in [folder] + [f"{folder}/{name}" for name in names]}
    modes.update({program + "kesta-demo": 0o755, bindir + "/kesta-qbank": 0o755, options: 0o666,
                  share + "/icons/hicolor/scalable/apps/kesta-demo.svg": 0o644,
                  **dict.fromkeys([data.parents[1], data.parent, data, data / "Log", data / "User"], 0o777)})
    for path, want in modes.items():
        check((have := stat.S_IMODE(os.lstat(path).st_mode)) == want, f"{path} has mode {have:o}, not {want:o}")
    check(options.read_bytes() == DEFAULT_OPTIONS, "default options file wrong")
    options.write_bytes(USER_OPTIONS)
    cmake_install()  # an upgrade keeps the options a user has set
    check(options.read_bytes() == USER_OPTIONS, "reinstalling replaced the user's options")
    # Started through the launcher, as the desktop entry starts it, the program also proves the launcher's link
    # relative: the staged tree is not where the prefix says.
    shutil.copy2(a["program"], program + "kesta-demo")
    for source in glob.glob(a["banks"] + "/*.txt"):
        run(a["qbank"], "build", source, "-o", f"{program}Questions/{Path(source).stem}.kqb")
    return bindir + "/kesta-demo", str(data)


def serve(*argv):  # a server that prints its address once it is ready, and nothing more (nothing: it ended)
    return check(spawn(argv, stdout=subprocess.PIPE, text=True).stdout.readline().strip(), f"{argv[0]} did not start")


def find(root, role, name):  # the first showing object below root with this role and name, depth first
    for child in (c for c in root if c.getState().contains(pyatspi.STATE_SHOWING)):
        if found := child if (child.getRoleName(), child.name) == (role, name) else find(child, role, name):
            return found


def act(acc, action):
    # The reply is not awaited: Qt sends a menu item's only once the modal box that the item opens has
    # closed. Each step waits for what the action shows instead.
    index = [acc.get_action_name(i) for i in range(acc.get_n_actions())].index(action)  # ValueError: not offered
    A11Y_BUS.call(acc.app.bus_name, acc.path, "org.a11y.atspi.Action", "DoAction", GLib.Variant("(i)", (index,)),
                  None, Gio.DBusCallFlags.NONE, -1, None, None)
    return acc


class Program:  # one run of the program, and what a person does with it
    def __init__(self, launcher, data_dir, scratch):
        self.data_dir = data_dir
        self.proc = spawn([launcher], cwd=scratch, stdout=open(scratch + "/program.log", "a"), stderr=subprocess.STDOUT)
        shift = lambda: pyatspi.Registry.generateKeyboardEvent(0xFFE1, None, pyatspi.KEY_SYM)  # any key ends the splash
        self.main = self.wait("the idle main window", lambda: IDLE_PAGE in self.page() and self.window("frame", TITLE)
                              or shift())

    def wait(self, what, probe):
        deadline = time.monotonic() + 20
        while check(self.proc.poll() is None, f"the program ended ({self.proc.returncode}) before {what}"):
            check(time.monotonic() < deadline, f"no {what} in 20 s:\n{self.page()}\n{self.page('ErrorLog.log')}")
            with contextlib.suppress(Exception):  # an object vanished while being read: look again
                if value := probe():
                    return value
            time.sleep(0.03)

    def window(self, role, name):  # a showing top-level window; role None: any
        app = next(a for a in pyatspi.Registry.getDesktop(0) if a and a.get_process_id() == self.proc.pid)
        return next((w for w in app if w.name == name and role in (None, w.getRoleName())
                     and w.getState().contains(pyatspi.STATE_SHOWING)), None)

    def press(self, window, name, role="push button", action="Press"):
        return act(self.wait(f"{role} {name!r}", lambda: find(window, role, name)), action)

    def answer(self, role, title, button="OK"):  # a message box or dialog, then wait for it to close
        self.press(self.wait(f"{role} {title!r}", lambda: self.window(role, title)), button)
        self.wait(f"{title!r} to close", lambda: not self.window(role, title))

    def menu(self, *path, alert=None):  # chooses a menu item by captions once it is enabled; then the alert it opens
        def item():
            level = find(self.main, "menu bar", "")
            for caption in path:
                leaf = next(c for c in level if c.getRoleName() == "menu item" and c.name.startswith(caption))
                level = leaf[0] if leaf.childCount else []  # an item's submenu is its child
            return leaf.getState().contains(pyatspi.STATE_ENABLED) and leaf
        act(self.wait(f"menu item {' > '.join(path)}", item), "Press")
        alert and self.answer("alert", alert)

    def page(self, name="qtmp.htm"):  # the page file that the shown page comes from, or another file of Log/
        path = Path(self.data_dir, "Log", name)
        return path.read_text(encoding="utf-8", errors="replace") if path.exists() else ""

    def record(self, other_than=None):  # waits for a page with one question record, not the one before
        shown = lambda: re.findall(r"E2E-Q(\d)", self.page())
        return int(self.wait("a question page", lambda: len(f := shown()) == 1 and f[0] != str(other_than) and f[0]))

    def quiz(self, count):  # starts the quiz, answers `count` of its 4 questions: the records shown, the letters
        self.menu("File", "New Domain Quiz or Exam", "Select Domain Quiz", QUIZ_TITLE)
        self.press(self.main, "Start Domain Quiz")  # so named once a quiz is chosen
        self.answer("alert", TITLE)  # "The Domain Quiz will now begin..."
        shown, letters = [self.record()], ""
        for position in range(1, count + 1):
            letters += "aacd"[shown[-1] - 1]  # question record k is answered by letter k, but record 2 wrongly
            option = self.press(self.main, letters[-1].upper(), "radio button", "Toggle")
            self.wait(f"answer {letters[-1]} checked", lambda: option.getState().contains(pyatspi.STATE_CHECKED))
            self.press(self.main, "Next Question" if position < 4 else "Finish")
            shown += [self.record(other_than=shown[-1])] if position < 4 else []
        return shown, letters

    def leave(self, results=None, test_started=False):  # by the results' button or the menu; a test is not saved
        self.press(results, EXIT) if results else self.menu("File", EXIT)
        for title, button in [(EXIT, "OK")] + [("Save Progress", "No")] * test_started:  # the last ends the program
            self.press(self.wait(f"dialog {title!r}", lambda: self.window("dialog", title)), button)
        check(self.proc.wait(20) == 0, f"the program ended with status {self.proc.returncode}")

    def results(self, *expected):  # any role: a plain top-level widget, which AT-SPI shows as a filler, not a frame
        window = self.wait("the results window", lambda: self.window(None, "Results"))
        self.wait(f"review page {expected}", lambda: all(text in self.page() for text in ("Your answer:", *expected)))
        return window


def check_progress(path, position, order, answers):  # a saved score or progress; usrdata.usr is made empty
    # Line 1: hours, minutes, current and furthest position, seconds left; line 2 the order; line 3 the answers.
    text, orders = Path(path).read_bytes().decode(), "".join(f"{record:03}" for record in order)
    check(re.fullmatch(rf"\d\d[0-5]\d{position:03}{position:03}[0-5]\d\r\n{orders}\r\n{answers}", text)
          and os.path.getsize(Path(path).parent / "usrdata.usr") == 0, f"{path}: {text!r}, or usrdata.usr kept")
    return lambda: (Path(path).read_bytes(), os.stat(path).st_mtime_ns)  # what may not change any more


def finished_quiz(program):  # the whole quiz with one wrong answer, explained; the score reopened
    order, answers = program.quiz(4)
    program.answer("alert", "Save Score")
    results = program.results("E2E-Q2", "Your answer: A", "The correct answer is: B", "Explanation: E2E-X2")
    check_progress(f"{program.data_dir}/User/{QUIZ}.usr.score1", 5, order, answers)
    check(not os.path.exists(f"{program.data_dir}/User/{QUIZ}.usr"), "saving a score wrote a progress file")
    program.press(results, "Close Explanation")
    program.answer("dialog", "Exit Explanation Dialog")
    program.menu("File", "View Previous Scores", QUIZ_TITLE + " (Saved on: ", alert="Open Existing Domain Quiz")
    program.leave(program.results("E2E-Q2", "The correct answer is: B"))  # no test running: nothing more is asked


def saved_progress(program, relaunch):  # two answers saved; left without saving again; restored
    shown, answers = program.quiz(2)
    program.menu("File", "Save Domain Quiz or Exam Progress", alert="Save Progress")  # shown once the file is written
    # The order ends with the one record of the four not shown yet.
    state = check_progress(Path(program.data_dir, "User", QUIZ + ".usr"), 3, shown + [10 - sum(shown)], answers)
    saved = state()
    program.leave(test_started=True)
    check(state() == saved, "answering No to the save question still wrote the progress file")
    program = relaunch()
    program.menu("File", "Load Previous", "Load Domain Quiz", QUIZ_TITLE, alert="Load Existing Domain Quiz")
    # The restored page is the question record numbered like the saved position.
    check(program.record() == 3 and state() == saved, f"restored from {saved}:\n{program.page()}")
    program.leave(test_started=True)


def main(a):
    tools, path = ["Xvfb", "dbus-daemon", "at-spi-bus-launcher"], os.environ.get("PATH", os.defpath) + ":/usr/libexec"
    if not importlib.util.find_spec("pyatspi") or not all(shutil.which(tool, path=path) for tool in tools):
        print(f"SKIPPED: needs {', '.join(tools)} and pyatspi for {sys.executable} (scripts/deps.sh installs them)")
        return 77
    global pyatspi, Gio, GLib, A11Y_BUS
    import pyatspi
    from gi.repository import Gio, GLib
    shutil.rmtree(a["scratch"], ignore_errors=True)
    os.makedirs(runtime := a["scratch"] + "/runtime", mode=0o700)
    launcher, data_dir = install(a)

    # From here on only a private display and session bus are used.
    for name in [n for n in os.environ if n.startswith(("QT_", "DBUS_", "AT_SPI", "NO_AT_BRIDGE"))]:
        del os.environ[name]
    os.environ.update(XDG_RUNTIME_DIR=runtime, QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
    # No reset when a client leaves: the second run of the program finds the same server.
    os.environ["DISPLAY"] = ":" + serve("Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-noreset")
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = serve("dbus-daemon", "--session", "--nofork", "--print-address=1")
    # The accessibility bus, which the session bus starts on demand and which ends with it.
    A11Y_BUS = Gio.DBusConnection.new_for_address_sync(Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
        "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, 0, 20000, None).unpack()[0],
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
    relaunch = lambda: Program(launcher, data_dir, a["scratch"])
    finished_quiz(relaunch())
    saved_progress(relaunch(), relaunch)
    check(not os.path.exists(data_dir + "/Log/ErrorLog.log"), "the program logged errors")
    print("passed: a score taken and reopened, progress saved and restored")
    return 0  # the servers end with the driver


if __name__ == "__main__":
    sys.exit(main(dict(arg.split("=", 1) for arg in sys.argv[1:])))
