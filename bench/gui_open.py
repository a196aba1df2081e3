#!/usr/bin/env python3
"""Times the desktop program as a whole process: from starting `quorvant FILE` until its window
is shown with the database's title (the file opened and the list filled), on an X display
(Xvfb).
Each run starts a fresh process with its own settings folder and ends it afterwards.

usage: gui_open.py QUORVANT FILE.PDB [--display :N] [--runs N]
"""
import argparse
import ctypes
import faulthandler
import os
import signal
import statistics
import subprocess
import tempfile
import time

x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
x11.XOpenDisplay.argtypes = [ctypes.c_char_p]
x11.XDefaultRootWindow.restype = ctypes.c_ulong
x11.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
x11.XQueryTree.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(ctypes.c_ulong),
                           ctypes.POINTER(ctypes.c_ulong),
                           ctypes.POINTER(ctypes.POINTER(ctypes.c_ulong)),
                           ctypes.POINTER(ctypes.c_uint)]
x11.XFetchName.argtypes = [ctypes.c_void_p, ctypes.c_ulong,
                           ctypes.POINTER(ctypes.POINTER(ctypes.c_char))]
x11.XFree.argtypes = [ctypes.c_void_p]
x11.XGetWindowAttributes.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_void_p]
MAP_STATE_OFFSET, IS_VIEWABLE = 92, 2  # XWindowAttributes.map_state on 64-bit Linux


def viewable(display, window):
    attributes = (ctypes.c_char * 256)()
    if not x11.XGetWindowAttributes(display, window, attributes):
        return False
    return ctypes.c_int.from_buffer(attributes, MAP_STATE_OFFSET).value == IS_VIEWABLE
x11.XCloseDisplay.argtypes = [ctypes.c_void_p]


def window_titles(display):
    """The titles of the top-level windows that are shown."""
    root, parent = ctypes.c_ulong(), ctypes.c_ulong()
    children = ctypes.POINTER(ctypes.c_ulong)()
    n = ctypes.c_uint()
    titles = []
    if not x11.XQueryTree(display, x11.XDefaultRootWindow(display), ctypes.byref(root),
                          ctypes.byref(parent), ctypes.byref(children), ctypes.byref(n)):
        return titles
    for i in range(n.value):
        name = ctypes.POINTER(ctypes.c_char)()
        if not viewable(display, children[i]):
            continue
        if x11.XFetchName(display, children[i], ctypes.byref(name)) and name:
            titles.append(ctypes.string_at(name).decode("utf-8", "replace"))
            x11.XFree(name)
    if children:
        x11.XFree(children)
    return titles


def ensure_display(display):
    """Starts Xvfb on the display unless something answers there; returns the process or None."""
    d = x11.XOpenDisplay(display.encode())
    if d:
        x11.XCloseDisplay(d)
        return None
    xvfb = subprocess.Popen(["Xvfb", display, "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for _ in range(200):
        time.sleep(0.025)
        d = x11.XOpenDisplay(display.encode())
        if d:
            x11.XCloseDisplay(d)
            return xvfb
    raise SystemExit(f"no X display at {display}")


def one_run(quorvant, path, display, title, home):
    env = dict(os.environ, DISPLAY=display, XDG_CONFIG_HOME=home, QUORVANT_HOME=home,
               QT_QPA_PLATFORM="xcb")
    d = None
    for _ in range(100):  # a busy server refuses a connection now and then
        d = x11.XOpenDisplay(display.encode())
        if d:
            break
        time.sleep(0.05)
    if not d:
        raise SystemExit(f"cannot open the X display {display}")
    start = time.perf_counter()
    app = subprocess.Popen([quorvant, path], env=env, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
    elapsed = None
    try:
        while time.perf_counter() - start < 30 and app.poll() is None:
            if any(t.startswith(title) for t in window_titles(d)):
                elapsed = time.perf_counter() - start
                break
            time.sleep(0.001)
    finally:
        app.send_signal(signal.SIGTERM)
        try:
            app.wait(timeout=10)
        except subprocess.TimeoutExpired:
            app.kill()
            app.wait()
        x11.XCloseDisplay(d)
    if elapsed is None:
        raise SystemExit("the window never showed the database's title")
    return elapsed


def report(quorvant, path, display, runs, work=None):
    faulthandler.enable()
    xvfb = ensure_display(display)
    try:
        with open(path, "rb") as f:  # the database's name leads the title
            title = f.read(32).split(b"\0")[0].decode("cp1252") + " ("
        times = []
        with tempfile.TemporaryDirectory(dir=work) as home:
            one_run(quorvant, path, display, title, home)  # warm-up
            for _ in range(runs):
                times.append(one_run(quorvant, path, display, title, home))
        print(f"quorvant {os.path.basename(path)} to its titled window: median "
              f"{statistics.median(times) * 1000:.0f} ms over {runs} runs "
              f"(min {min(times) * 1000:.0f}, max {max(times) * 1000:.0f})")
    finally:
        if xvfb:
            xvfb.terminate()
            xvfb.wait()


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("quorvant")
    ap.add_argument("file")
    ap.add_argument("--display", default=os.environ.get("DISPLAY") or ":12")
    ap.add_argument("--runs", type=int, default=9)
    a = ap.parse_args()
    report(os.path.abspath(a.quorvant), os.path.abspath(a.file), a.display, a.runs)


if __name__ == "__main__":
    main()
