#!/usr/bin/env python3
"""Runs the example programs as a user would: examples_test.py DIRECTORY_OF_PROGRAMS."""
import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import unittest

PROGRAMS = pathlib.Path(sys.argv.pop(1))


def run(program, *arguments, limit=None):
    """The exit code, output and errors of a program; limit: the most bytes it may write to a file."""
    def lower_limit():
        if limit is not None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
    done = subprocess.run([PROGRAMS / program, *map(str, arguments)], capture_output=True, text=True,
                          preexec_fn=lower_limit, timeout=60, check=False)
    return done.returncode, done.stdout, done.stderr


class WithScene(unittest.TestCase):
    """Every class of tests has a folder of its own with a painted scene in it."""
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.here = pathlib.Path(cls.folder.name)
        cls.scene = cls.here / "scene.jpg"
        code, cls.painted, _ = run("thumbnail", "--paint", cls.scene, 640, 480)
        assert code == 0

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()


class Thumbnail(WithScene):
    def fails(self, code, source, target, **limits):
        """The run ends with 1, names the code, and leaves the folder as it was."""
        before = {path: path.read_bytes() for path in self.here.iterdir() if path.is_file()}
        exit_code, _, errors = run("thumbnail", source, target, "--format", "jpeg", **limits)
        self.assertEqual(exit_code, 1, errors)
        self.assertIn(f"result:  {code}", errors)
        self.assertIn("meaning: ", errors)
        after = {path: path.read_bytes() for path in self.here.iterdir() if path.is_file()}
        self.assertEqual(before, after)
        return errors

    def test_good_runs(self):
        starts = {"jpg": b"\xff\xd8\xff", "png": b"\x89PNG", "bmp": b"BM"}
        self.assertIn("640 x 480", self.painted)
        source = self.scene
        for ending, start in starts.items():
            target = self.here / f"good.{ending}"
            target.write_bytes(b"old")
            code, output, errors = run("thumbnail", source, target, 64, 48, "--kernel", "gaussian")
            self.assertEqual((code, errors), (0, ""))
            for text in ("opened", "24 bits per pixel", "to 64 x 48, gaussian", "wrote", " ms\n"):
                self.assertIn(text, output)
            self.assertTrue(target.read_bytes().startswith(start))
            source = target
        small, large = self.here / "small.jpg", self.here / "large.jpg"
        self.assertEqual(run("thumbnail", self.scene, small, "--quality", 10)[0], 0)
        self.assertEqual(run("thumbnail", self.scene, large, "--quality", 95)[0], 0)
        self.assertLess(small.stat().st_size, large.stat().st_size)

    def test_bad_sources(self):
        target = self.here / "bad.jpg"
        text, cut, head = self.here / "text", self.here / "cut.jpg", self.here / "head.jpg"
        text.write_text("no picture\n")
        head.write_bytes(b"\xff\xd8\xff")
        tiff = self.here / "tiff"
        tiff.write_bytes(b"II*\0" * 20)
        self.fails("KEL_ERR_FILE", self.here / "missing.jpg", target)
        self.fails("KEL_ERR_FILE", self.here, target)
        self.fails("KEL_ERR_FAIL", text, target)
        self.fails("KEL_ERR_OPEN_FORMAT", tiff, target)
        errors = self.fails("KEL_ERR_CODEC", head, target)
        self.assertIn("trace:   CKelJpegDecoder::jpeg_error_exit, err msg: ", errors)
        cut.write_bytes(self.scene.read_bytes()[:9000])  # what is there is shown
        self.assertEqual(run("thumbnail", cut, self.here / "cut-small.jpg")[0], 0)

    def test_bad_targets(self):
        old = self.here / "old.jpg"
        old.write_bytes(b"an older file")
        self.fails("KEL_ERR_FILE", self.scene, self.here)
        self.fails("KEL_ERR_FILE", self.scene, self.here / "no" / "such" / "folder.jpg")
        for limit in (0, 1000, 5000):  # a disk that is full after so many bytes
            self.fails("KEL_ERR_FILE", self.scene, old, limit=limit)
            self.fails("KEL_ERR_FILE", self.scene, self.here / "new.jpg", limit=limit)
        if os.path.exists("/dev/full"):
            self.fails("KEL_ERR_FILE", self.scene, "/dev/full")
            self.assertTrue(pathlib.Path("/dev/full").is_char_device())

    def test_keeps_links_and_modes(self):
        real, link = self.here / "real.png", self.here / "link.png"
        real.write_bytes(b"old")
        real.chmod(0o640)
        link.symlink_to(real)
        self.assertEqual(run("thumbnail", self.scene, link)[0], 0)
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


class OtherExamples(WithScene):
    def test_from_memory(self):
        code, output, errors = run("frommemory", self.scene)
        self.assertEqual((code, errors), (0, ""))
        self.assertIn("640 x 480 pixels", output)
        code, _, errors = run("frommemory", self.here / "missing")
        self.assertEqual(code, 1)
        self.assertIn("KEL_ERR_FAIL", errors)

    def test_adopt(self):
        target = self.here / "adopted.png"
        code, output, errors = run("adopt", target)
        self.assertEqual((code, errors), (0, ""))
        self.assertIn("first byte 255", output)
        self.assertTrue(target.read_bytes().startswith(b"\x89PNG"))

    def test_host_stream(self):
        code, output, _ = run("hoststream", self.scene)
        self.assertEqual(code, 0)
        self.assertIn("trace, level 2: CKelJpegDecoder::Do, jpeg_decompress_struct:", output)
        self.assertIn("640 x 480 pixels from", output)
        self.assertEqual(run("hoststream", self.here / "missing")[0], 1)

    def test_folder(self):
        source, target = self.here / "many", self.here / "small"
        source.mkdir()
        for i in range(9):
            (source / f"{i}.jpg").write_bytes(self.scene.read_bytes())
        code, output, _ = run("folder", source, target, 3)
        self.assertEqual(code, 0, output)
        self.assertIn("9 of 9", output)
        (source / "bad.png").write_bytes(b"no picture")
        code, output, _ = run("folder", source, target)
        self.assertEqual(code, 1)
        self.assertIn("bad.png: ", output)
        self.assertEqual(len(list(target.iterdir())), 9)
        self.assertEqual(run("folder", self.here / "missing", target)[0], 1)


if __name__ == "__main__":
    unittest.main()
