#!/usr/bin/env python3
"""Runs the viewer in a virtual screen as a user would: viewer_test.py DIRECTORY_OF_PROGRAMS.

The screen is as large as the window, so positions in it are positions in the window.
"""
import pathlib
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

PROGRAMS = pathlib.Path(sys.argv.pop(1))
COLOURS = {"R": (220, 30, 40), "G": (20, 180, 60), "B": (30, 60, 200), "W": (240, 235, 230)}
PLAIN, ERROR = (40, 60, 90), (130, 30, 30)  # the ground of messages
SIZE = 64, 48


def samples():
    """Name, file and bits: a red, a green, a blue and a white quarter, at one bit red and green."""
    width, height = SIZE
    quarters = [[2 * (2 * y // height) + 2 * x // width for x in range(width)] for y in range(height)]
    bgr = [bytes(reversed(colour)) for colour in COLOURS.values()]
    packed = [struct.pack("<H", r >> 3 << 10 | g >> 3 << 5 | b >> 3) for r, g, b in COLOURS.values()]
    table = b"".join(entry + b"\0" for entry in bgr)
    for bits in (1, 4, 8, 16, 24, 32):
        def row(line):
            if bits > 8:
                pixel = {16: packed, 24: bgr, 32: [entry + b"\0" for entry in bgr]}[bits]
                return b"".join(pixel[i] for i in line)
            value = int("".join(f"{min(i, 2 ** bits - 1):0{bits}b}" for i in line), 2)
            return value.to_bytes(width * bits // 8, "big")
        colours = table[:8] if bits == 1 else table if bits < 16 else b""
        pixels = b"".join(row(line) for line in reversed(quarters))
        start = 54 + len(colours)
        yield f"{bits}.bmp", bits, (struct.pack("<2sIIIIiiHHIIiiII", b"BM", start + len(pixels), 0, start, 40, width,
                                                height, 1, bits, 0, len(pixels), 0, 0, len(colours) // 4, 0) +
                                    colours + pixels)
    rgb = [bytes(colour) for colour in COLOURS.values()]
    for kind, bits, pixel in ((2, 24, rgb), (3, 8, [b"\0", b"\1", b"\2", b"\3"]), (6, 32, [c + b"\x80" for c in rgb])):
        data = zlib.compress(b"".join(b"\0" + b"".join(pixel[i] for i in line) for line in quarters))
        chunks = [(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, kind, 0, 0, 0)), (b"PLTE", b"".join(rgb)),
                  (b"IDAT", data), (b"IEND", b"")]
        yield f"{kind}.png", bits, b"\x89PNG\r\n\x1a\n" + b"".join(
            struct.pack(">I", len(body)) + name + body + struct.pack(">I", zlib.crc32(name + body))
            for name, body in chunks)


class Viewer(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.here = pathlib.Path(folder.name)
        screen = subprocess.Popen(["Xvfb", "-noreset", "-displayfd", "1", "-screen", "0", "1024x720x24", "-fbdir",
                                   self.here], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(screen.communicate)
        self.addCleanup(screen.terminate)
        self.environment = {"DISPLAY": ":" + screen.stdout.readline().strip(), "PATH": "/usr/bin:/bin",
                            "SDL_VIDEODRIVER": "x11", "SDL_RENDER_DRIVER": "software",
                            "SDL_FRAMEBUFFER_ACCELERATION": "0"}
        for name, _, content in samples():
            (self.here / name).write_bytes(content)

    def do(self, *arguments, check=True):
        """A command of xdotool, such as a key; its output."""
        return subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=check, timeout=60,
                              capture_output=True, text=True).stdout.strip()

    def start(self, path, title):
        self.viewer = subprocess.Popen([PROGRAMS / "viewer" / "viewer", path], env=self.environment)
        self.addCleanup(self.viewer.wait)
        self.addCleanup(self.viewer.kill)
        self.until(lambda: self.do("search", "--onlyvisible", "--pid", self.viewer.pid, check=False) != "", True)
        self.window = self.do("search", "--onlyvisible", "--pid", self.viewer.pid)
        self.do("windowfocus", "--sync", self.window)
        self.until(lambda: self.do("getwindowname", self.window), title)

    def until(self, value, wanted):
        end = time.monotonic() + 20
        while value() != wanted and time.monotonic() < end:
            time.sleep(0.05)
        self.assertEqual(value(), wanted)

    def titled(self, *rest):
        self.until(lambda: self.do("getwindowname", self.window).split(" - ")[1].split(", ")[::2], list(rest))

    def keys(self, *keys):
        self.do("key", *keys)

    def pixel(self, x, y):
        screen = (self.here / "Xvfb_screen0").read_bytes()
        header = struct.unpack(">25I", screen[:100])
        start = header[0] + 12 * header[19] + y * header[12] + 4 * x
        return tuple(reversed(screen[start:start + 3]))

    def at(self, x, y):
        """The name of the colour there, or the colour."""
        found = self.pixel(x, y)
        near = [name for name, colour in COLOURS.items() if all(abs(a - b) < 8 for a, b in zip(found, colour))]
        return near[0] if near else found

    def shows(self, quarters, size=SIZE):
        """The four quarters of the picture, in the middle of the window."""
        width, height = (int(n * min(1024 / size[0], 720 / size[1])) for n in size)
        places = [(512 + i * width // 4, 361 + k * height // 4) for k in (-1, 1) for i in (-1, 1)]
        self.until(lambda: [self.at(*place) for place in places], list(quarters))

    def test_opens_every_kind(self):
        subprocess.run([PROGRAMS / "thumbnail", self.here / "24.bmp", self.here / "24.jpg", "64", "48", "--quality",
                        "100"], check=True, stdout=subprocess.DEVNULL)
        for name, bits, _ in [*samples(), ("24.jpg", 24, None)]:
            with self.subTest(name):
                self.start(self.here / name, f"{name} - 64 x 48, {bits} bits, 1500 %, bilinear")
                self.shows("RGGG" if bits == 1 else "RGBW")
                self.keys("q")
                # 1: Xlib ends the program where SDL_Quit talks to a window that is gone already.
                self.assertIn(self.viewer.wait(10), (0, 1))

    def test_keys_and_drags(self):
        self.start(self.here / "24.bmp", "24.bmp - 64 x 48, 24 bits, 1500 %, bilinear")
        for key, quarters, size in (("f", "BWRG", SIZE), ("m", "WBGR", SIZE), ("t", "WGBR", SIZE[::-1]),
                                    ("r", "BWRG", SIZE), ("f", "RGBW", SIZE)):
            self.keys(key)
            self.shows(quarters, size)
        for kernel in ("box", "gaussian", "hamming", "bilinear"):
            self.keys("b")
            self.until(lambda: self.do("getwindowname", self.window).split(", ")[-1], kernel)
        self.keys("c")
        self.titled("64 x 48", "750 %")
        self.until(lambda: [self.at(x, y) for y in (90, 450) for x in (136, 648)], ["R"] * 4)
        # The red before the edge to green: a short slope, none, a long one, one that overshoots.
        slopes = [(220, 168), (220, 220), (181, 123), (238, 139)]
        self.until(lambda: [tuple(self.pixel(x - i, y)[0] for i in (8, 1)) for y in (90, 450) for x in (256, 768)],
                   slopes)
        self.keys("c")
        self.titled("64 x 48", "1500 %")
        self.do("mousemove", 752, 180, "click", 4, "click", 4, "click", 4)  # the point under the mouse stays
        self.titled("64 x 48", "2930 %")
        self.until(lambda: [self.at(x, 180) for x in (260, 320)], ["R", "G"])
        self.do("mousemove", 1000, 700, "mousedown", 1, "mousemove", 60, 60, "mouseup", 1)
        self.until(lambda: self.at(512, 360), "W")
        self.keys("0")
        self.titled("64 x 48", "1500 %")
        self.do("mousemove", 100, 60, "mousedown", 3, "mousemove", 415, 300, "mouseup", 3)
        self.titled("21 x 16", "4500 %")  # 945 pixels wide: rows with padding
        self.shows("RRRR")
        for name in ("no/such.png", "new.png"):
            self.keys("s")
            self.until(lambda: self.at(1000, 710), PLAIN)
            self.do("type", name)
            self.keys("Return")
            if name == "no/such.png":
                self.until(lambda: self.at(1000, 710), ERROR)
        self.until((self.here / "new.png").exists, True)
        saved = subprocess.run([PROGRAMS / "frommemory", self.here / "new.png"], capture_output=True, text=True)
        self.assertIn("21 x 16 pixels", saved.stdout)

    @unittest.skipUnless(list(pathlib.Path("/usr/lib").glob("tkdnd*")), "needs tkdnd")
    def test_takes_a_dropped_file(self):
        self.start(self.here / "8.bmp", "8.bmp - 64 x 48, 8 bits, 1500 %, bilinear")
        (self.here / "source").write_text("package require tkdnd\nwm overrideredirect . 1\nwm geometry . 40x40+0+0\n"
                                          ". configure -background yellow\ntkdnd::drag_source register . DND_Files\n"
                                          f"bind . <<DragInitCmd>> {{list copy DND_Files {self.here}/16.bmp}}\n")
        source = subprocess.Popen(["wish", self.here / "source"], env=self.environment)
        self.addCleanup(source.wait)
        self.addCleanup(source.kill)
        self.until(lambda: self.at(5, 5), (255, 255, 0))
        self.do("mousemove", 20, 20, "mousedown", 1)
        for place in range(30, 200, 10):
            self.do("mousemove", place, place)
        self.do("mouseup", 1)
        self.until(lambda: self.do("getwindowname", self.window), "16.bmp - 64 x 48, 16 bits, 1500 %, bilinear")

    def test_long_scales_and_failures(self):
        large = self.here / "large.jpg"
        subprocess.run([PROGRAMS / "thumbnail", "--paint", large, "2000", "1500"], check=True,
                       stdout=subprocess.DEVNULL)
        self.start(large, "large.jpg - 2000 x 1500, 24 bits, 48 %, bilinear")
        self.keys("1", "plus", "plus", "plus", "plus", "plus")
        self.titled("2000 x 1500", "305 %")
        self.keys("z", "Escape")
        self.until(lambda: self.at(1000, 710), PLAIN)  # says that the job was cancelled
        self.titled("2000 x 1500", "305 %")
        self.keys("z")
        self.titled("6104 x 4578", "16 %")
        (self.here / "broken.jpg").write_bytes(b"\xff\xd8\xff")
        self.start(self.here / "broken.jpg", "viewer")
        self.until(lambda: [self.at(1000, y) == ERROR for y in (640, 670, 690, 710)], [False, True, True, True])


if __name__ == "__main__":
    unittest.main()
