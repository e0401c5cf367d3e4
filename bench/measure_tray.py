#!/usr/bin/python3
"""measure_tray.py - what a tray program costs, as one JSON object.

    DESKTOP_TRAY=mate desktop-session measure_tray.py --name floor --runs 7 --tray sni -- build/floor

Runs inside a desktop (DISPLAY and DBUS_SESSION_BUS_ADDRESS set). Python's standard library only; by ctypes the X
libraries of libx11-6 and libxres1; for commands given with --show/--hide/--after whatever they need (xdotool,
dbus-bin); for --packages apt. Root is needed only where the program's processes belong to somebody else.

Order: [--runs + 1] starts (the first, with an empty home, is reported apart), the last one stays: --after, --settle
seconds, memory, --idle seconds of counting, then --shows times show and hide, memory again, end.

  --tray sni|xembed|window   what ends the start: item registered with the watcher, icon window docked, window mapped
  --show CMD / --hide CMD    shell commands; default for sni: Activate on the item over D-Bus (no process is started);
                             for xembed: a click on the icon by xdotool (its own start, some 5 ms, counts).
                             With --show and no --hide the same command must toggle.
  --no-show                  do not try
  --kill                     end it by SIGKILL at once, for programs that do not end by SIGTERM
  --after CMD                shell command that starts the program's timer
  --home DIR                 template of the program's HOME (copied); default: empty. Lives through all runs.
  --binary FILE              whose size is told; default: the program itself (what the kernel runs)
  --packages "a b"           Debian packages, for the packages and MB they pull in on a bare system

All times in ms from just before posix_spawn (or the click) to the moment the event is read from the bus or the X
connection. mapped: MapNotify of the window or its frame on the root window. painted: first time the window (over 0.4
Mpixel: eight lines of it) holds more than one colour, looked at every ms. focus: _NET_ACTIVE_WINDOW names a window of it.
CPU: the processes' own CPU clocks (ns), whole tree (all descendants, orphans too: we are the subreaper).
"""
import argparse, atexit, ctypes as C, glob, json, os, re, select, shutil, signal, socket, statistics, struct
import subprocess, sys, tempfile, time

now = time.monotonic


# ---- processes -------------------------------------------------------------------------------------------------
def read(path, mode="r"):
    try:
        with open(path, mode) as f:
            return f.read()
    except (OSError, UnicodeDecodeError):
        return "" if mode == "r" else b""


def parents():
    out = {}
    for e in os.listdir("/proc"):
        if e.isdigit():
            s = read(f"/proc/{e}/stat").rpartition(")")[2].split()
            if len(s) > 2 and s[0] not in "ZX":
                out[int(e)] = int(s[1])
    return out


def tree(skip=()):
    """pids of all our descendants, those of helper processes left out"""
    par, kids = parents(), {}
    for p, q in par.items():
        kids.setdefault(q, []).append(p)
    todo, out = [p for p in kids.get(os.getpid(), []) if p not in skip], []
    while todo:
        p = todo.pop()
        out.append(p)
        todo += kids.get(p, [])
    return sorted(out)


def ours(pid):
    for _ in range(40):
        if pid == os.getpid():
            return True
        s = read(f"/proc/{pid}/stat").rpartition(")")[2].split()
        if len(s) < 2 or pid <= 1:
            return False
        pid = int(s[1])
    return False


def cpu_ns(pid):
    try:
        return time.clock_gettime_ns(((~pid) << 3) | 2)  # MAKE_PROCESS_CPUCLOCK(pid, CPUCLOCK_SCHED)
    except OSError:
        return None


def child_ticks(pid):  # CPU of children already waited for: those that came and went
    s = read(f"/proc/{pid}/stat").rpartition(")")[2].split()
    return (int(s[13]) + int(s[14])) * 1000 / os.sysconf("SC_CLK_TCK") if len(s) > 14 else 0


def switches(pids):
    out = {}
    for p in pids:
        for t in glob.glob(f"/proc/{p}/task/*/status"):
            m = re.search(r"^voluntary_ctxt_switches:\s*(\d+)", read(t), re.M)
            if m:
                out[t] = int(m[1])
    return out


def memory(pids):
    keys = {"Pss": 0, "Rss": 0, "Pss_Anon": 0, "Private_Clean": 0, "Private_Dirty": 0}
    hwm = 0
    for p in pids:
        for k, v in re.findall(r"^(\w+): +(\d+) kB", read(f"/proc/{p}/smaps_rollup"), re.M):
            if k in keys:
                keys[k] += int(v)
        m = re.search(r"VmHWM:\s*(\d+)", read(f"/proc/{p}/status"))
        hwm += int(m[1]) if m else 0
    mb = lambda kb: round(kb / 1024, 1)
    return {"pss_mb": mb(keys["Pss"]), "uss_mb": mb(keys["Private_Clean"] + keys["Private_Dirty"]), "rss_mb": mb(keys["Rss"]),
            "pss_anon_mb": mb(keys["Pss_Anon"]), "private_dirty_mb": mb(keys["Private_Dirty"]), "rss_peak_mb": mb(hwm)}


def desktop_pids(but):
    mark = os.environ.get("DESKTOP_SESSION_MARK")
    if not mark:
        return []
    want, me = b"DESKTOP_SESSION_MARK=" + mark.encode(), os.getpid()
    return [p for p in parents() if p not in but and p != me and want in read(f"/proc/{p}/environ", "rb").split(b"\0")]


def machine_busy():  # busy share of all cores is the difference of two of these
    v = [int(x) for x in read("/proc/stat").split("\n")[0].split()[1:9]]
    return sum(v) - v[3] - v[4], sum(v)


# ---- D-Bus: just enough of it ----------------------------------------------------------------------------------
class Bus:
    def __init__(self):
        addr = os.environ.get("DBUS_SESSION_BUS_ADDRESS", "")
        m = re.search(r"unix:(path|abstract)=([^,;]+)", addr)
        if not m:
            raise SystemExit("measure_tray: no session bus")
        self.s = socket.socket(socket.AF_UNIX)
        self.s.connect(m[2] if m[1] == "path" else "\0" + m[2])
        self.s.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
        assert self.s.recv(256).startswith(b"OK")
        self.s.sendall(b"BEGIN\r\n")
        self.buf, self.serial, self.signals = b"", 0, []
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "Hello")
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "AddMatch",
                  "type='signal',interface='org.kde.StatusNotifierWatcher',member='StatusNotifierItemRegistered'")

    def send(self, dest, path, iface, member, *args):
        self.serial += 1
        body, sig = b"", ""
        pad = lambda b, n: b + b"\0" * (-len(b) % n)
        for a in args:
            body = pad(body, 4)
            if isinstance(a, str):
                sig += "s"
                body += struct.pack("<I", len(a.encode())) + a.encode() + b"\0"
            else:
                sig += "i"
                body += struct.pack("<i", a)
        fields = b""
        for code, t, v in ((1, "o", path), (2, "s", iface), (3, "s", member), (6, "s", dest), (8, "g", sig)):
            if not v:
                continue
            fields = pad(fields, 8) + bytes([code, 1]) + t.encode() + b"\0"
            fields += (bytes([len(v)]) if t == "g" else struct.pack("<I", len(v))) + v.encode() + b"\0"
        head = struct.pack("<cBBBIII", b"l", 1, 0, 1, len(body), self.serial, len(fields)) + fields
        self.s.sendall(pad(head, 8) + body)
        return self.serial

    def pump(self, timeout):
        """(type, reply serial, member, signature, body) of the next message, or None"""
        end = now() + timeout
        while True:
            if len(self.buf) >= 16:
                e = "<" if self.buf[:1] == b"l" else ">"
                blen, _, flen = struct.unpack(e + "III", self.buf[4:16])
                start = 16 + flen + (-flen % 8)
                if len(self.buf) >= start + blen:
                    msg, self.buf = self.buf[:start + blen], self.buf[start + blen:]
                    out, i = {}, 16
                    while i < 16 + flen:
                        i += -i % 8
                        code, t = msg[i], chr(msg[i + 2])
                        i += 4
                        if t == "g":
                            n = msg[i]
                            out[code] = msg[i + 1:i + 1 + n].decode()
                            i += n + 2
                        elif t == "u":
                            out[code] = struct.unpack(e + "I", msg[i:i + 4])[0]
                            i += 4
                        else:
                            n = struct.unpack(e + "I", msg[i:i + 4])[0]
                            out[code] = msg[i + 4:i + 4 + n].decode()
                            i += n + 5
                    return msg[1], out.get(5), out.get(3), out.get(8, ""), (e, msg[start:])
            left = end - now()
            if not select.select([self.s], [], [], max(left, 0))[0]:
                return None
            got = self.s.recv(65536)
            if not got:
                raise SystemExit("measure_tray: the bus has gone")
            self.buf += got

    @staticmethod
    def first(sig, body):
        e, b = body
        if sig[:1] == "s":
            n = struct.unpack(e + "I", b[:4])[0]
            return b[4:4 + n].decode()
        return struct.unpack(e + "I", b[:4])[0] if sig[:1] in "ubi" and b else None

    def call(self, *a, timeout=3):
        n, end = self.send(*a), now() + timeout
        while now() < end:
            m = self.pump(end - now())
            if m and m[0] in (2, 3) and m[1] == n:
                return self.first(m[3], m[4]) if m[0] == 2 else None
            if m and m[0] == 4:
                self.signals.append((now(), m))

    def items(self):
        """(time, service, path) of items registered since the last call"""
        out = []
        while True:
            m = self.pump(0)
            if not m:
                break
            if m[0] == 4:
                self.signals.append((now(), m))
        for t, m in self.signals:
            if m[2] == "StatusNotifierItemRegistered":
                name = self.first(m[3], m[4])
                svc, slash, rest = name.partition("/")
                out.append((t, svc, slash + rest if slash else "/StatusNotifierItem"))
        self.signals = []
        return out

    def pid(self, name):
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetConnectionUnixProcessID", name)


# ---- X ---------------------------------------------------------------------------------------------------------
class Attr(C.Structure):  # XWindowAttributes
    _fields_ = [(n, C.c_int) for n in ("x", "y", "width", "height", "border", "depth")] + [("visual", C.c_void_p), ("root", C.c_ulong)] + \
        [(n, C.c_int) for n in ("klass", "bit", "win", "backing")] + [("planes", C.c_ulong), ("pixel", C.c_ulong), ("under", C.c_int),
         ("cmap", C.c_ulong), ("inst", C.c_int), ("map_state", C.c_int), ("em", C.c_long), ("yem", C.c_long), ("dnp", C.c_long), ("ovr", C.c_int), ("scr", C.c_void_p)]


class Spec(C.Structure):
    _fields_ = [("client", C.c_ulong), ("mask", C.c_uint)]


class Val(C.Structure):
    _fields_ = [("spec", Spec), ("length", C.c_long), ("value", C.c_void_p)]


class X:
    def __init__(self):
        self.x, self.r = C.CDLL("libX11.so.6"), C.CDLL("libXRes.so.1")
        for f, res in (("XOpenDisplay", C.c_void_p), ("XDefaultRootWindow", C.c_ulong), ("XInternAtom", C.c_ulong), ("XGetImage", C.c_void_p)):
            getattr(self.x, f).restype = res
        self.h = C.CFUNCTYPE(C.c_int, C.c_void_p, C.c_void_p)(lambda *_: 0)
        self.x.XSetErrorHandler(self.h)
        d = self.x.XOpenDisplay(None)
        if not d:
            raise SystemExit("measure_tray: no display")
        self.d = C.c_void_p(d)
        self.root = self.x.XDefaultRootWindow(self.d)
        self.x.XSelectInput(self.d, C.c_ulong(self.root), C.c_long((1 << 19) | (1 << 22)))  # SubstructureNotify, PropertyChange
        self.active, self.xembed = self.atom("_NET_ACTIVE_WINDOW"), self.atom("_XEMBED_INFO")
        self.fd = self.x.XConnectionNumber(self.d)
        self.events()

    def atom(self, n):
        return self.x.XInternAtom(self.d, n.encode(), 0)

    def events(self):
        """[(kind, window, other)]: map, reparent (other: new parent), property (other: atom)"""
        out, ev = [], C.create_string_buffer(192)
        while self.x.XPending(self.d):
            self.x.XNextEvent(self.d, ev)
            t, = struct.unpack_from("i", ev, 0)
            if t == 19:
                out.append(("map", struct.unpack_from("L", ev, 40)[0], 0))
            elif t == 21:
                out.append(("reparent",) + struct.unpack_from("LL", ev, 40))
            elif t == 28:
                out.append(("property", struct.unpack_from("L", ev, 32)[0], struct.unpack_from("L", ev, 40)[0]))
        return out

    def prop(self, w, atom):
        typ, fmt, n, left, data = C.c_ulong(), C.c_int(), C.c_ulong(), C.c_ulong(), C.c_void_p()
        self.x.XGetWindowProperty(self.d, C.c_ulong(w), C.c_ulong(atom), C.c_long(0), C.c_long(4), 0, C.c_ulong(0), C.byref(typ),
                                  C.byref(fmt), C.byref(n), C.byref(left), C.byref(data))
        v = C.cast(data, C.POINTER(C.c_ulong))[0] if data and n.value and fmt.value == 32 else None
        if data:
            self.x.XFree(data)
        return v

    def pid(self, w):
        n, v, s = C.c_long(), C.c_void_p(), Spec(w, 2)
        self.r.XResQueryClientIds(self.d, C.c_long(1), C.byref(s), C.byref(n), C.byref(v))
        p = 0
        if v and n.value:
            p = self.r.XResGetClientPid(v)
        if v:
            self.r.XResClientIdsDestroy(n, v)
        return p

    def children(self, w):
        r, p, c, n = C.c_ulong(), C.c_ulong(), C.c_void_p(), C.c_uint()
        self.x.XQueryTree(self.d, C.c_ulong(w), C.byref(r), C.byref(p), C.byref(c), C.byref(n))
        out = list(C.cast(c, C.POINTER(C.c_ulong))[0:n.value]) if c and n.value else []
        if c:
            self.x.XFree(c)
        return out

    def attr(self, w):
        a = Attr()
        return a if self.x.XGetWindowAttributes(self.d, C.c_ulong(w), C.byref(a)) else None

    def client(self, w):
        """the program's window that the root's child w is or frames, when it is a real one"""
        a = self.attr(w)
        if not a or a.map_state != 2 or a.width < 40 or a.height < 40 or a.x > 10000 or a.x + a.width <= 0:
            return None
        for c in [w] + self.children(w):
            p = self.pid(c)
            if p > 0 and ours(p):
                return c
        return None

    def visible(self):
        return [c for c in map(self.client, self.children(self.root)) if c]

    def painted(self, w):
        a = self.attr(w)
        if not a or a.map_state != 2:
            return False
        if a.width * a.height <= 400000:
            parts = [(0, 0, a.width, a.height)]
        else:  # four rows and four columns are enough, and cheap for the server
            parts = [(0, a.height * k // 8, a.width, 1) for k in (1, 3, 5, 7)] + [(a.width * k // 8, 0, 1, a.height) for k in (1, 3, 5, 7)]
        one = None
        for x, y, ww, hh in parts:
            i = self.x.XGetImage(self.d, C.c_ulong(w), x, y, C.c_uint(ww), C.c_uint(hh), C.c_ulong(0xFFFFFFFF), 2)
            if not i:
                return False
            head = C.string_at(i, 48)
            data, per = struct.unpack_from("P", head, 16)[0], struct.unpack_from("i", head, 44)[0]
            raw = C.string_at(data, per * hh)
            self.x.XDestroyImage(C.c_void_p(i))
            one = one or raw[:4]
            if raw != one * (len(raw) // 4):
                return True
        return False


# ---- the run ---------------------------------------------------------------------------------------------------
class Run:
    def __init__(self, o):
        self.o, self.bus, self.x, self.item, self.icon, self.helpers = o, Bus(), X(), None, None, set()
        self.home = tempfile.mkdtemp(prefix="measure_tray.")
        atexit.register(shutil.rmtree, self.home, True)
        atexit.register(self.end)
        if o.home:
            shutil.copytree(o.home, self.home, dirs_exist_ok=True, symlinks=True)
        self.env = {k: v for k, v in os.environ.items() if not k.startswith("XDG_") or k in ("XDG_RUNTIME_DIR", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "XDG_DATA_DIRS")}
        self.env.update(HOME=self.home)
        self.log = os.path.join(self.home, ".measure_tray.log")

    def spawn(self):
        fl = os.O_WRONLY | os.O_CREAT | os.O_APPEND
        self.t0 = now()
        self.root = os.posix_spawnp(self.o.command[0], self.o.command, self.env, setsid=True, file_actions=[
            (os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0), (os.POSIX_SPAWN_OPEN, 1, self.log, fl, 0o600), (os.POSIX_SPAWN_DUP2, 1, 2)])

    def shell(self, cmd, wait=True):
        p = subprocess.Popen(["sh", "-c", cmd], env=self.env, stdin=subprocess.DEVNULL, stdout=open(self.log, "a"), stderr=subprocess.STDOUT)
        self.helpers.add(p.pid)
        if wait:
            try:
                p.wait(20)
            except subprocess.TimeoutExpired:
                p.kill()
        return p

    def start(self):
        """{sni, xembed, window}: ms, of what came within the time; ends 0.7 s after what --tray asks for"""
        self.bus.items(), self.x.events()
        got, self.item, self.icon = {}, None, None
        self.spawn()
        end = self.t0 + self.o.timeout
        while now() < end:
            select.select([self.bus.s, self.x.fd], [], [], min(0.25, max(0, end - now())))
            t = (now() - self.t0) * 1000
            for kind, w, other in self.x.events():
                if kind == "map" and "window" not in got and self.x.client(w):
                    got["window"] = t
                elif kind == "reparent" and other != self.x.root and "xembed" not in got and self.x.prop(w, self.x.xembed) is not None and ours(self.x.pid(w)):
                    got["xembed"], self.icon = t, w
            for at, svc, path in self.bus.items():
                p = self.bus.pid(svc)
                if "sni" not in got and p and ours(p):
                    got["sni"], self.item = (at - self.t0) * 1000, (svc, path)
            if self.o.tray in got and end > now() + 0.7:
                end = now() + 0.7
        return got

    def reap(self):
        try:
            while os.waitpid(-1, os.WNOHANG)[0]:
                pass
        except ChildProcessError:
            pass

    def end(self):
        told, t0 = set(), now()
        while True:
            self.reap()
            left = tree()
            if not left:
                return
            age, par = now() - t0, parents()
            for p in left:
                try:
                    if age > 6 or self.o.kill:
                        os.kill(p, signal.SIGKILL)
                    elif p not in told and (par.get(p) == os.getpid() or age > 3):
                        os.kill(p, signal.SIGTERM)
                        told.add(p)
                except ProcessLookupError:
                    pass
            if age > 12:
                return print("measure_tray: left over:", left, file=sys.stderr)
            time.sleep(0.05)

    def idle(self, seconds):
        pids = tree(self.helpers)
        desk = desktop_pids(set(tree()))
        snap = lambda ps: {p: v for p in ps if (v := cpu_ns(p)) is not None}
        b0, t0, c0, k0, v0, d0 = machine_busy(), now(), snap(pids), sum(map(child_ticks, pids)), switches(pids), snap(desk)
        w0 = switches(desk)
        time.sleep(seconds)
        pids = tree(self.helpers)
        t1, c1, k1, v1, d1, b1 = now(), snap(pids), sum(map(child_ticks, pids)), switches(pids), snap(desk), machine_busy()
        w1 = switches([p for p in d1 if p in d0])
        per = lambda a, b: sum(b[p] - a.get(p, 0) for p in b) / 1e6 * 60 / (t1 - t0)
        return {"seconds": seconds, "cpu_ms_per_min": round(per(c0, c1) + max(0, k1 - k0) * 60 / (t1 - t0), 1),
                "voluntary_switches_per_s": round(sum(v1[t] - v0.get(t, 0) for t in v1) / (t1 - t0), 2),
                "desktop_cpu_ms_per_min": round(per({p: d0[p] for p in d1 if p in d0}, {p: d1[p] for p in d1 if p in d0}), 1),
                "desktop_switches_per_s": round(sum(w1[t] - w0.get(t, 0) for t in w1) / (t1 - t0), 2),
                "machine_busy_percent": round(100 * (b1[0] - b0[0]) / max(1, b1[1] - b0[1]), 1)}

    def poke(self, which):
        cmd = self.o.show if which == "show" or not self.o.hide else self.o.hide
        if cmd:
            self.shell(cmd, wait=False)
        elif self.item:
            self.bus.send(self.item[0], self.item[1], "org.kde.StatusNotifierItem", "Activate", 640, 28)
        elif self.icon:
            self.shell(f"xdotool mousemove --window {self.icon} 9 9 click 1", wait=False)

    def gone(self, seconds):
        end = now() + seconds
        while now() < end:
            if not self.x.visible():
                return True
            time.sleep(0.05)
        return False

    def shows(self):
        if self.o.no_show or not (self.o.show or self.item or self.icon):
            return None
        out = []
        if self.x.visible():
            for _ in range(2):  # the first may only raise
                self.poke("hide")
                if self.gone(2):
                    break
            else:
                return {"error": "window cannot be hidden"}
        for i in range(self.o.shows):
            time.sleep(0.6)
            self.x.events(), self.bus.items()
            t0, r, w = now(), {}, None
            self.poke("show")
            while now() < t0 + 5 and not ({"mapped", "painted", "focus"} <= set(r) or ("painted" in r and now() > t0 + r["painted"] / 1e3 + 0.5)):
                select.select([self.x.fd], [], [], 0.001 if w and "painted" not in r else 0.02)
                t = (now() - t0) * 1000
                for kind, win, other in self.x.events():
                    if kind == "map" and not w and (w := self.x.client(win)):
                        r["mapped"] = t
                    elif kind == "property" and other == self.x.active and "focus" not in r:
                        a = self.x.prop(self.x.root, self.x.active)
                        if a and (p := self.x.pid(a)) > 0 and ours(p):
                            r["focus"] = t
                if w and "painted" not in r and self.x.painted(w):
                    r["painted"] = (now() - t0) * 1000
            if "mapped" not in r:
                break
            out.append({k: round(v, 1) for k, v in r.items()})
            time.sleep(0.6)
            self.poke("hide")
            if not self.gone(2):
                break
        if not out:
            return {"error": "no window came"}
        again = out[1:]
        med = lambda k: round(statistics.median([s[k] for s in again if k in s]), 1) if any(k in s for s in again) else None
        return {"first": out[0], "again_median": {k: med(k) for k in ("mapped", "painted", "focus")}, "again_runs": len(again), "all": out}

    def counts(self):
        pids = tree(self.helpers)
        ent = lambda p, d: len(os.listdir(f"/proc/{p}/{d}")) if os.path.isdir(f"/proc/{p}/{d}") else 0
        exe = self.o.binary
        if not exe:
            try:
                exe = os.readlink(f"/proc/{self.root}/exe")
            except OSError:
                exe = shutil.which(self.o.command[0])
        return {"processes": len(pids), "threads": sum(ent(p, "task") for p in pids), "fds": sum(ent(p, "fd") for p in pids),
                "binary": exe, "binary_kb": round(os.path.getsize(exe) / 1024, 1) if exe and os.path.exists(exe) else None}


# ---- packages: what apt would bring to a bare system ------------------------------------------------------------
DESKTOP = "xserver-xorg-core dbus-x11 xfwm4 xfconf mate-panel xfce4-notifyd hicolor-icon-theme adwaita-icon-theme fonts-dejavu-core"


def packages(names):
    blocks = {}
    for b in read("/var/lib/dpkg/status").strip().split("\n\n"):
        f = dict(re.findall(r"^([\w-]+): *(.*)$", b, re.M))
        blocks[f["Package"]] = (b, f)
    todo = [p for p, (_, f) in blocks.items() if f.get("Priority") == "required" or f.get("Essential") == "yes"] + ["apt", "debian-archive-keyring"]
    base = set()
    while todo:
        p = todo.pop()
        if p in base or p not in blocks:
            continue
        base.add(p)
        for k in ("Depends", "Pre-Depends"):
            for dep in filter(None, blocks[p][1].get(k, "").split(",")):
                alts = [re.sub(r"[ (:].*", "", a.strip()) for a in dep.split("|")]
                todo += [a for a in alts if a in blocks][:1]
    with tempfile.TemporaryDirectory() as t:
        st = os.path.join(t, "status")

        def sim(have, what, rec):
            open(st, "w").write("".join(blocks[p][0] + "\n\n" for p in sorted(have)))
            r = subprocess.run(["apt-get", "-s", "-q", "-o", "Dir::State::status=" + st, "-o", "Dir::State::extended_states=/dev/null", "-o", "Dir::Cache::pkgcache=",
                                "-o", "Dir::Cache::srcpkgcache=", "-o", "Debug::NoLocking=1", f"--{'' if rec else 'no-'}install-recommends", "install", *what.split()],
                               capture_output=True, text=True)
            if r.returncode:
                return None
            return set(re.findall(r"^Inst (\S+)", r.stdout, re.M))

        def mb(ps):
            if not ps:
                return 0.0
            s = subprocess.run(["apt-cache", "--no-all-versions", "show", *sorted(ps)], capture_output=True, text=True).stdout
            size = {}
            for b in s.strip().split("\n\n"):
                f = dict(re.findall(r"^([\w-]+): *(.*)$", b, re.M))
                size.setdefault(f.get("Package"), int(f.get("Installed-Size", 0)))
            return round(sum(size.values()) / 1024, 1)

        desk = sim(base, DESKTOP, False) or set()
        out = {"of": names, "base": "minbase (essential + required), and that with the test desktop"}
        for rec in (False, True):
            full = sim(base, names, rec)
            if full is None:
                return {"of": names, "error": "apt-get -s fails"}
            k = "with_recommends" if rec else "depends_only"
            out[k] = {"packages": len(full), "mb": mb(full), "beyond_desktop": len(full - desk), "beyond_desktop_mb": mb(full - desk)}
        return out


def spread(v):
    return {"median": round(statistics.median(v), 1), "min": round(min(v), 1), "max": round(max(v), 1), "runs": len(v)} if v else None


def main():
    a = argparse.ArgumentParser(usage="measure_tray.py --name N [options] -- COMMAND...  (see the head of the file)")
    a.add_argument("--name", required=True)
    a.add_argument("--runs", type=int, default=5)
    a.add_argument("--settle", type=float, default=20)
    a.add_argument("--idle", type=float, default=30)
    a.add_argument("--shows", type=int, default=6)
    a.add_argument("--timeout", type=float, default=15)
    a.add_argument("--tray", choices=("sni", "xembed", "window"), default="sni")
    for n in ("show", "hide", "after", "home", "binary", "packages"):
        a.add_argument("--" + n)
    a.add_argument("--no-show", action="store_true")
    a.add_argument("--kill", action="store_true")
    a.add_argument("command", nargs="+")
    o = a.parse_args()
    for s in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(s, lambda *_: sys.exit(143))
    C.CDLL(None).prctl(36, 1, 0, 0, 0)  # PR_SET_CHILD_SUBREAPER

    out = {"name": o.name, "command": o.command, "tray": o.tray, "loadavg_before": read("/proc/loadavg").split()[0]}
    if o.packages:
        out["packages"] = packages(o.packages)
    r, all_ = Run(o), []
    for i in range(o.runs + 1):
        all_.append(r.start())
        if i < o.runs:
            r.end()
            time.sleep(0.2)
    out["start_first_ms"] = {k: round(v, 1) for k, v in all_[0].items()}
    out["start_ms"] = {k: spread([s[k] for s in all_[1:] if k in s]) for k in ("sni", "xembed", "window") if any(k in s for s in all_[1:])}
    out["start"] = out["start_ms"].get(o.tray)
    if not tree(r.helpers):
        out["error"] = "it does not stay: " + read(r.log)[-400:]
    else:
        if o.after:
            r.shell(o.after)
        time.sleep(max(0, o.settle - (now() - r.t0)))
        out["memory"] = memory(tree(r.helpers))
        out["idle"] = r.idle(o.idle)
        out.update(r.counts())
        out["show"] = r.shows()
        if out["show"] and "first" in out["show"]:
            out["memory_after_show"] = memory(tree(r.helpers))
    r.end()
    out["loadavg_after"] = read("/proc/loadavg").split()[0]
    print(json.dumps(out))


if __name__ == "__main__":
    main()
