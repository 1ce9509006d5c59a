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

TITLE, QUIZ, QUIZ_TITLE = "KESTA DEMO", "e2e-quiz.kqb", "KESTA Quiz Demo - End to End"
IDLE_PAGE = "Select a new Domain Quiz or Exam from the file menu to begin"
DEFAULT_OPTIONS, USER_OPTIONS = b"1\r\n0\r\n0\r\n1\r\n30\r\n5", b"1\r\n0\r\n0\r\n2\r\n0\r\n7"
DATA_DIRS = ["MORVO", "MORVO/KESTA", "MORVO/KESTA/All", "MORVO/KESTA/All/Log", "MORVO/KESTA/All/User"]


def check(condition, message):
    if not condition:
        raise AssertionError(message)


def spawn(argv, **kwargs):  # a child that dies with the driver, even one killed by a CTest timeout (PR_SET_PDEATHSIG)
    return subprocess.Popen(argv, preexec_fn=lambda: ctypes.CDLL(None).prctl(1, signal.SIGKILL), **kwargs)


def run(*argv, **kwargs):
    done = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **kwargs)
    check(done.returncode == 0, f"{' '.join(argv)} failed:\n{done.stdout}")
    return done.stdout


def mode(path):
    return stat.S_IMODE(os.lstat(path).st_mode)


def check_install(a, scratch):
    # A real `cmake --install`, staged under DESTDIR with umask 0: no mode may come from the installer's umask.
    destdir, root = scratch + "/install-root", scratch + "/install-root/opt/kesta-e2e"
    install = lambda: run(a["cmake"], "--install", a["build_dir"], "--prefix", "/opt/kesta-e2e",
                          env=dict(os.environ, DESTDIR=destdir), preexec_fn=lambda: os.umask(0))
    install()
    bindir, datadir = f"{root}/{a['bindir']}", f"{root}/{a['datadir']}"
    program, desktop = f"{root}/{a['libdir']}/kesta-demo/kesta-demo", datadir + "/applications/kesta-demo.desktop"
    banks = glob.glob(os.path.dirname(program) + "/Questions/*")
    check(banks and all("Corrupt: no" in run(bindir + "/kesta-qbank", "check", bank) for bank in banks),
          f"the question files beside the installed program do not load: {banks}")
    # Relative, so that the staged tree works where it lies (the e2e run below starts it) and once moved.
    check(os.readlink(bindir + "/kesta-demo") == f"../{a['libdir']}/kesta-demo/kesta-demo", "launcher link wrong")
    check(re.search(r"^Exec=kesta-demo$", Path(desktop).read_text(), re.M), "the desktop entry starts no launcher")
    # Only the data tree is shared: nobody but the owner may change the program or its questions.
    modes = {program: 0o755, bindir + "/kesta-qbank": 0o755, desktop: 0o644, **dict.fromkeys(banks, 0o644),
             datadir + "/icons/hicolor/scalable/apps/kesta-demo.svg": 0o644}
    for folder, _, files in os.walk(root):
        for path in [folder] + [os.path.join(folder, name) for name in files]:
            want = 0o755 if os.path.isdir(path) else 0o777 if os.path.islink(path) else modes.pop(path, 0o644)
            check(mode(path) == want, f"{path} has mode {mode(path):o}, not {want:o}")
    check(not modes, f"not installed: {sorted(modes)}")

    appdata = destdir + a["appdata_dir"]
    check(all(mode(f"{appdata}/{sub}") == 0o777 for sub in DATA_DIRS), "a data folder is not writable by all users")
    options = Path(appdata, DATA_DIRS[-1], "option.usr")
    check(options.read_bytes() == DEFAULT_OPTIONS and mode(options) == 0o666, "default options file wrong")
    options.write_bytes(USER_OPTIONS)
    install()  # an upgrade keeps the options a user has set
    check(options.read_bytes() == USER_OPTIONS, "reinstalling replaced the user's options")
    options.write_bytes(DEFAULT_OPTIONS)
    return root, appdata + "/MORVO/KESTA/All"


def serve(argv, log_path):
    # Starts a server that prints its address once it is ready, and nothing more. What it starts in turn ends
    # with it: the accessibility bus that the session bus starts leaves once its session bus is gone.
    address = spawn(argv, stdout=subprocess.PIPE, stderr=open(log_path, "w"), text=True).stdout.readline().strip()
    check(address, f"{argv[0]} did not start (see {log_path})")  # nothing printed: it ended
    return address


def showing(acc):
    return acc.getState().contains(pyatspi.STATE_SHOWING)


def find(root, role, name):  # the first showing object below root with this role and name, depth first
    for child in filter(showing, root):
        if child.getRoleName() == role and child.name == name:
            return child
        if found := find(child, role, name):
            return found


def act(acc, action):
    # The reply is not awaited: Qt sends a menu item's only once the modal box that the item opens has
    # closed. Each step waits for what the action shows instead.
    names = [acc.get_action_name(i) for i in range(acc.get_n_actions())]
    check(action in names, f"{acc.getRoleName()} {acc.name!r} offers {names}, not {action!r}")
    A11Y_BUS.call(acc.app.bus_name, acc.path, "org.a11y.atspi.Action", "DoAction",
                  GLib.Variant("(i)", (names.index(action),)), None, Gio.DBusCallFlags.NONE, -1, None, None)


class Program:  # one run of the program, and what a person does with it
    def __init__(self, launcher, data_dir, scratch):
        self.data_dir = data_dir
        self.proc = spawn([launcher], cwd=scratch, stdout=open(scratch + "/program.log", "a"), stderr=subprocess.STDOUT)
        first = self.wait("a window", lambda: self.window("frame", TITLE) or find(self.app(), "label", TITLE))
        if first.getRoleName() == "label":  # the splash, which any key dismisses
            pyatspi.Registry.generateKeyboardEvent(0xFFE1, None, pyatspi.KEY_SYM)  # Shift
        self.main = self.wait("the idle main window", lambda: IDLE_PAGE in self.page() and self.window("frame", TITLE))

    def app(self):
        return next(a for a in pyatspi.Registry.getDesktop(0) if a and a.get_process_id() == self.proc.pid)

    def wait(self, what, probe, may_end=False):
        deadline = time.monotonic() + 20
        while time.monotonic() < deadline:
            check(may_end or self.proc.poll() is None, f"the program ended ({self.proc.returncode}) before {what}")
            with contextlib.suppress(Exception):  # an object vanished while being read: look again
                if value := probe():
                    return value
            time.sleep(0.03)
        raise AssertionError(f"timed out waiting for {what}; page:\n{self.page()}\n{self.page('ErrorLog.log')}")

    def window(self, role, name):  # a showing top-level window; role None: any
        return next((w for w in self.app() if w.name == name and role in (None, w.getRoleName()) and showing(w)), None)

    def press(self, window, name, role="push button"):
        act(self.wait(f"{role} {name!r}", lambda: find(window, role, name)), "Press")

    def answer(self, role, title, button="OK"):  # a message box or dialog, then wait for it to close
        self.press(self.wait(f"{role} {title!r}", lambda: self.window(role, title)), button)
        self.wait(f"{title!r} to close", lambda: self.proc.poll() is not None or not self.window(role, title), True)

    def menu(self, *path):  # walks the menu bar by caption and chooses the last item once it is enabled
        def item():
            level = find(self.main, "menu bar", "")
            for caption in path:
                leaf = next(c for c in level if c.getRoleName() == "menu item" and c.name.startswith(caption))
                level = leaf[0] if leaf.childCount else []  # an item's submenu is its child
            return leaf.getState().contains(pyatspi.STATE_ENABLED) and leaf
        act(self.wait(f"menu item {' > '.join(path)}", item), "Press")

    def page(self, name="qtmp.htm"):  # the page file that the shown page comes from, or another file of Log/
        path = Path(self.data_dir, "Log", name)
        return path.read_text(encoding="utf-8", errors="replace") if path.exists() else ""

    def record(self, other_than=None):  # waits for a page with one question record, not the one before
        shown = lambda: re.findall(r"E2E-Q(\d)", self.page())
        return int(self.wait("a question page", lambda: len(f := shown()) == 1 and f[0] != str(other_than) and f[0]))

    def start_quiz(self):
        self.menu("File", "New Domain Quiz or Exam", "Select Domain Quiz", QUIZ_TITLE)
        self.press(self.main, "Start Domain Quiz")  # so named once a quiz is chosen
        self.answer("alert", TITLE)  # "The Domain Quiz will now begin..."
        return self.record()

    def choose(self, letter, record, button="Next Question"):
        option = self.wait(f"answer {letter}", lambda: find(self.main, "radio button", letter.upper()))
        act(option, "Toggle")
        self.wait(f"answer {letter} checked", lambda: option.getState().contains(pyatspi.STATE_CHECKED))
        self.press(self.main, button)
        return button != "Finish" and self.record(other_than=record)

    def leave(self, test_started=False):  # confirms leaving; a started test is first offered for saving: No
        self.press(self.wait("the exit dialog", lambda: self.window("dialog", "Exit " + TITLE)), "OK")
        if test_started:
            self.answer("dialog", "Save Progress", "No")
        check(self.proc.wait(20) == 0, f"the program ended with status {self.proc.returncode}")

    def results(self):  # any role: a plain top-level widget, which AT-SPI shows as a filler, not a frame
        window = self.wait("the results window", lambda: self.window(None, "Results"))
        return window, self.wait("the review page", lambda: "Your answer:" in self.page() and self.page())


def read_progress(path):
    # Line 1: hours, minutes, current and furthest position, seconds left; line 2 the order; line 3 the answers.
    data = Path(path).read_bytes()
    parts = re.fullmatch(rb"\d\d[0-5]\d(\d{3})(\d{3})[0-5]\d\r\n((?:\d{3})*)\r\n([a-d]*)", data)
    check(parts, f"{path} is no progress file: {data!r}")
    check(os.path.getsize(os.path.join(os.path.dirname(path), "usrdata.usr")) == 0, "usrdata.usr not made empty")
    order = [int(parts[3][i:i + 3]) for i in range(0, len(parts[3]), 3)]
    return data, (int(parts[1]), int(parts[2])), order, parts[4].decode()


def finished_quiz(program):  # the whole quiz with one wrong answer, explained; the score reopened
    record, order, answers = program.start_quiz(), [], ""
    for position in range(1, 5):
        order.append(record)
        answers += "a" if record == 2 else " abcd"[record]  # question record k is answered by letter k
        record = program.choose(answers[-1], record, "Next Question" if position < 4 else "Finish")
    program.answer("alert", "Save Score")
    results, page = program.results()
    for expected in ("E2E-Q2", "Your answer: A", "The correct answer is: B", "Explanation: E2E-X2"):
        check(expected in page, f"results page lacks {expected!r}:\n{page}")
    check(not program.window("frame", TITLE), "the main window stays beside the results")
    score = read_progress(f"{program.data_dir}/User/{QUIZ}.usr.score1")
    check(score[1:] == ((5, 5), order, answers), f"score file {score[0]!r}; shown {order}, clicked {answers!r}")
    check(not os.path.exists(f"{program.data_dir}/User/{QUIZ}.usr"), "saving a score wrote a progress file")

    program.press(results, "Close Explanation")
    program.answer("dialog", "Exit Explanation Dialog")
    program.wait("the idle main window", lambda: program.window("frame", TITLE) and IDLE_PAGE in program.page())
    program.menu("File", "View Previous Scores", QUIZ_TITLE + " (Saved on: ")
    program.answer("alert", "Open Existing Domain Quiz")
    results, page = program.results()
    check("E2E-Q2" in page and "The correct answer is: B" in page, f"reopened score shows:\n{page}")
    program.press(results, "Exit " + TITLE)
    program.leave()  # no test running: nothing more is asked


def saved_progress(program, relaunch):  # two answers saved; left without saving again; restored
    shown = [program.start_quiz()]
    for letter in "db":
        shown.append(program.choose(letter, shown[-1]))
    program.menu("File", "Save Domain Quiz or Exam Progress")
    program.answer("alert", "Save Progress")  # shown once the file is written
    progress = Path(program.data_dir, "User", QUIZ + ".usr")
    saved, position, order, answers = read_progress(progress)
    check(position == (3, 3) and sorted(order) == [1, 2, 3, 4] and order[:3] == shown and answers == "db",
          f"progress file {saved!r} after showing {shown} and answering 'db'")
    saved_at = progress.stat().st_mtime_ns
    unchanged = lambda: progress.read_bytes() == saved and progress.stat().st_mtime_ns == saved_at
    program.menu("File", "Exit " + TITLE)
    program.leave(test_started=True)
    check(unchanged(), "answering No to the save question still wrote the progress file")

    program = relaunch()
    program.menu("File", "Load Previous Domain Quiz or Exam", "Load Domain Quiz", QUIZ_TITLE)
    program.answer("alert", "Load Existing Domain Quiz")
    # The restored page is the question record numbered like the saved position.
    check(program.record() == 3 and unchanged(), f"restored from {progress.read_bytes()!r}:\n{program.page()}")
    program.menu("File", "Exit " + TITLE)
    program.leave(test_started=True)


def main(a):
    tools, path = ["Xvfb", "dbus-daemon", "at-spi-bus-launcher"], os.environ.get("PATH", os.defpath) + ":/usr/libexec"
    if not importlib.util.find_spec("pyatspi") or not all(shutil.which(tool, path=path) for tool in tools):
        print(f"SKIPPED: needs {', '.join(tools)} and pyatspi for {sys.executable} (scripts/deps.sh installs them)")
        return 77
    global pyatspi, Gio, GLib, A11Y_BUS
    import pyatspi
    from gi.repository import Gio, GLib
    scratch = os.path.abspath(a["scratch"])
    shutil.rmtree(scratch, ignore_errors=True)
    os.makedirs(scratch + "/runtime", mode=0o700)
    root, data_dir = check_install(a, scratch)
    # The e2e copy of the program, which keeps its data in the staged data tree, takes the installed program's
    # place, with the e2e banks beside it, and starts through the launcher, as the desktop entry starts it.
    program_dir, launcher = f"{root}/{a['libdir']}/kesta-demo", f"{root}/{a['bindir']}/kesta-demo"
    shutil.copy2(a["program"], program_dir + "/kesta-demo")
    for source in glob.glob(a["banks"] + "/*.txt"):
        run(a["qbank"], "build", source, "-o", f"{program_dir}/Questions/{Path(source).stem}.kqb")

    # From here on only a private display and session bus are used.
    for name in [n for n in os.environ if n.startswith(("QT_", "DBUS_", "AT_SPI", "NO_AT_BRIDGE"))]:
        del os.environ[name]
    os.environ.update(XDG_RUNTIME_DIR=scratch + "/runtime", QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
    os.environ["DISPLAY"] = ":" + serve(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten",
                                         "tcp", "-noreset"], scratch + "/xvfb.log")  # no reset when a run ends
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = serve(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                                                   scratch + "/dbus.log")
    address = Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(  # the accessibility bus, started on demand
        "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, 0, 20000, None).unpack()[0]
    A11Y_BUS = Gio.DBusConnection.new_for_address_sync(address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
                                                       Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
    relaunch = lambda: Program(launcher, data_dir, scratch)
    finished_quiz(relaunch())
    saved_progress(relaunch(), relaunch)
    check(not os.path.exists(data_dir + "/Log/ErrorLog.log"), "the program logged errors")
    print("passed: a score taken and reopened, progress saved and restored")
    return 0  # the servers end with the driver


if __name__ == "__main__":
    sys.exit(main(dict(arg.split("=", 1) for arg in sys.argv[1:])))
