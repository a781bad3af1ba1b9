#!/usr/bin/env python3
"""Runs the example programs as a user would: examples_test.py DIRECTORY_OF_PROGRAMS [EMULATOR...]."""
import pathlib
import resource
import subprocess
import sys
import tempfile
import unittest

PROGRAMS, EMULATOR = pathlib.Path(sys.argv[1]), sys.argv[2:]
ENDING = ".exe" if (PROGRAMS / "thumbnail.exe").exists() else ""


def run(program, *arguments, limit=None):
    """The exit code, output and errors of a program; limit: the most bytes it may write to a file."""
    def lower_limit():
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
    command = [*EMULATOR, PROGRAMS / f"{program}{ENDING}", *map(str, arguments)]
    # An emulator would end by the signal that the limit sends.
    done = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False,
                          preexec_fn=lower_limit if limit is not None else None, restore_signals=not EMULATOR)
    return done.returncode, done.stdout, done.stderr


class Examples(unittest.TestCase):
    """Every test has a folder of its own with a painted scene in it."""
    def setUp(self):
        folder = tempfile.TemporaryDirectory(suffix="Größe-大小-😀")
        self.addCleanup(folder.cleanup)
        self.here = pathlib.Path(folder.name)
        self.scene = self.here / "scene.jpg"
        self.painted = self.runs("thumbnail", "--paint", self.scene, 640, 480)

    def runs(self, *command):
        """The program works and is silent about errors; its output."""
        code, output, errors = run(*command)
        self.assertEqual((code, errors), (0, ""))
        return output

    def fails(self, code, source, target, **limits):
        """The run ends with 1, names the code, and leaves the folder as it was."""
        def files():
            return {path: path.read_bytes() for path in self.here.iterdir() if path.is_file()}
        before = files()
        exit_code, _, errors = run("thumbnail", source, target, "--format", "jpeg", **limits)
        self.assertEqual(exit_code, 1, errors)
        self.assertIn(f"result:  {code}", errors)
        self.assertIn("meaning: ", errors)
        self.assertEqual(before, files())
        return errors

    def test_good_runs(self):
        self.assertIn("640 x 480", self.painted)
        source = self.scene
        for ending, start in {"jpg": b"\xff\xd8\xff", "png": b"\x89PNG", "bmp": b"BM"}.items():
            target = self.here / f"good.{ending}"
            target.write_bytes(b"old")
            output = self.runs("thumbnail", source, target, 64, 48, "--kernel", "gaussian")
            for text in ("opened", "24 bits per pixel", "to 64 x 48, gaussian", "wrote", " ms\n"):
                self.assertIn(text, output)
            self.assertTrue(target.read_bytes().startswith(start))
            source = target
        files = [self.here / f"{quality}.jpg" for quality in (10, 95)]
        for file in files:
            self.runs("thumbnail", self.scene, file, "--quality", file.stem)
        self.assertLess(*(file.stat().st_size for file in files))

    def test_bad_sources(self):
        source, target = self.here / "bad", self.here / "bad.jpg"
        self.fails("KEL_ERR_FILE", self.here / "missing.jpg", target)
        for code, content in (("KEL_ERR_FAIL", b"no picture\n"), ("KEL_ERR_OPEN_FORMAT", b"II*\0" * 20),
                              ("KEL_ERR_CODEC", b"\xff\xd8\xff")):
            source.write_bytes(content)
            errors = self.fails(code, source, target)
        self.assertIn("trace:   CKelJpegDecoder::jpeg_error_exit, err msg: ", errors)
        source.write_bytes(self.scene.read_bytes()[:9000])  # what is there is shown
        self.assertEqual(run("thumbnail", source, target)[0], 0)

    def test_bad_targets(self):
        (self.here / "old.jpg").write_bytes(b"an older file")
        # The limit: a disk that is full after so many bytes.
        for target, limit in ((".", None), ("no/such/folder.jpg", None), ("old.jpg", 0), ("old.jpg", 5000),
                              ("new.jpg", 0), ("new.jpg", 5000)):
            self.fails("KEL_ERR_FILE", self.scene, self.here / target, limit=limit)
        full = pathlib.Path("/dev/full")
        if full.exists():
            self.fails("KEL_ERR_FILE", self.scene, full)
            self.assertTrue(full.is_char_device())

    @unittest.skipIf(ENDING, "Windows programs see neither under wine")
    def test_keeps_links_and_modes(self):
        real, link = self.here / "real.png", self.here / "link.png"
        real.write_bytes(b"old")
        real.chmod(0o640)
        link.symlink_to(real)
        self.runs("thumbnail", self.scene, link)
        self.assertTrue(link.is_symlink())
        self.assertTrue(real.read_bytes().startswith(b"\x89PNG"))
        self.assertEqual(real.stat().st_mode & 0o777, 0o640)

    def test_usage(self):
        out = self.here / "usage.jpg"
        for arguments in ((), (self.scene,), (self.scene, out, 10), (self.scene, out, 0, 5),
                          (self.scene, out, "--kernel", "cubic"), (self.scene, out, "--quality"),
                          (self.scene, self.here / "usage.xyz"), (self.scene, out, "--quality", "101")):
            code, _, errors = run("thumbnail", *arguments)
            self.assertEqual(code, 2, arguments)
            self.assertIn("usage: thumbnail", errors)
        self.assertFalse(out.exists())

    def test_one_picture(self):
        target = self.here / "adopted.png"
        self.assertIn("first byte 255", self.runs("adopt", target))
        self.assertTrue(target.read_bytes().startswith(b"\x89PNG"))
        for program, text in (("frommemory", "640 x 480 pixels"), ("hoststream", "640 x 480 pixels from"),
                              ("hoststream", "trace, level 2: CKelJpegDecoder::Do, jpeg_decompress_struct:")):
            self.assertIn(text, "".join(map(str, run(program, self.scene))))
            self.assertEqual(run(program, self.here / "missing")[0], 1)

    def test_folder(self):
        source, target = self.here / "many", self.here / "small"
        source.mkdir()
        for i in range(9):
            (source / f"{i}.jpg").write_bytes(self.scene.read_bytes())
        self.assertIn("9 of 9", self.runs("folder", source, target, "--threads", 3, "--size", 64))
        self.assertRegex(self.runs("folder", source), r"9 pictures, 0 failed, [1-9]\d* a second")
        self.assertIn("64 x 48", self.runs("frommemory", target / "0.jpg.thumb.jpg"))
        (source / "bad.png").write_bytes(b"no picture")
        code, output, _ = run("folder", source, target)
        self.assertEqual(code, 1)
        self.assertIn("bad.png: ", output)
        self.assertEqual(len(list(target.iterdir())), 9)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
