"""Tests of make_tree and sweep_once: what they print is checked against the tree as Python sees it."""
import hashlib
import json
import os
import subprocess
import tempfile
import unittest

SWEEP_ONCE = os.environ["SWEEP_ONCE"]
MAKE_TREE = os.environ["MAKE_TREE"]


def run(*command, cwd=None):
    return subprocess.run(command, cwd=cwd, capture_output=True, check=False)


def sweep(*arguments, cwd=None):
    done = run(SWEEP_ONCE, *arguments, cwd=cwd)
    if done.returncode != 0:
        raise AssertionError(done.stderr.decode(errors="replace"))
    if done.stdout.count(b"\n") != 1:
        raise AssertionError(f"not one line: {done.stdout!r}")
    return json.loads(done.stdout.decode("utf-8"))


def read_dump(path):
    with open(path, "rb") as file:
        content = file.read()
    entries = {}
    for record in content.split(b"\0")[:-1]:
        size, key = record.split(b"\t", 1)
        if key in entries:
            raise AssertionError(f"twice in the dump: {key!r}")
        entries[key] = int(size)
    return entries


def expected_entries(root):
    """Bytes by path, counted the slow way: every file into itself and every folder above it."""
    entries = {}
    for folder, _, files in os.walk(root):
        for name in files:
            path = os.path.join(folder, name)
            size = os.lstat(path).st_blocks * 512
            entries[path] = size
            while True:
                path = os.path.dirname(path)
                entries[path] = entries.get(path, 0) + size
                if path == root:
                    break
    return entries


def fingerprint(root):
    digest = hashlib.sha256()
    for folder, folders, files in os.walk(root):
        folders.sort()
        for name in sorted(files):
            path = os.path.join(folder, name)
            digest.update(f"{os.path.relpath(path, root)} {os.path.getsize(path)}\n".encode())
    return digest.hexdigest()


class BenchToolsTest(unittest.TestCase):
    def setUp(self):
        # Beside the tools, not in /tmp: a tmpfs reports no allocated blocks for small files in the way a disk does.
        self.place = tempfile.TemporaryDirectory(dir=os.path.dirname(SWEEP_ONCE))
        self.addCleanup(self.place.cleanup)
        self.root = os.path.join(os.path.realpath(self.place.name), "tree")

    def make_tree(self, *options):
        made = run(MAKE_TREE, self.root, *options)
        self.assertEqual(made.returncode, 0, made.stderr)

    def write(self, name, size):
        path = os.path.join(os.fsencode(self.root), name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(b"x" * size)


class MakeTreeTest(BenchToolsTest):
    def test_makes_as_many_files_and_folders_as_asked(self):
        self.make_tree("--files", "1234", "--folders", "77", "--fan-out", "3")
        walked = list(os.walk(self.root))
        self.assertEqual(sum(len(files) for _, _, files in walked), 1234)
        self.assertEqual(sum(len(folders) for _, folders, _ in walked), 77)
        self.assertEqual(max(len(folders) for _, folders, _ in walked), 3)

    def test_names_have_the_asked_average_length(self):
        self.make_tree("--files", "3000", "--folders", "10", "--name-length", "30")
        names = [name for _, _, files in os.walk(self.root) for name in files]
        self.assertAlmostEqual(sum(map(len, names)) / len(names), 30, delta=1)

    def test_same_options_make_the_same_tree_and_another_seed_another(self):
        prints = []
        for name, seed in (("one", "7"), ("two", "7"), ("three", "8")):
            self.root = os.path.join(os.path.dirname(self.root), name)
            self.make_tree("--files", "200", "--folders", "20", "--seed", seed)
            prints.append(fingerprint(self.root))
        self.assertEqual(prints[0], prints[1])
        self.assertNotEqual(prints[0], prints[2])

    def test_refuses_a_folder_that_holds_something(self):
        self.write(b"precious", 1)
        self.assertEqual(run(MAKE_TREE, self.root).returncode, 1)
        self.assertEqual(os.listdir(self.root), ["precious"])

    def test_bad_usage_exits_2(self):
        for arguments in ([], [self.root, "--files"], [self.root, "--files", "x"], [self.root, "--what", "1"],
                          [self.root, "--files", "-1"], [self.root, "other"],
                          [self.root, "--folders", "9", "--fan-out", "1", "--depth", "2"]):
            done = run(MAKE_TREE, *arguments)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertIn(b"usage:", done.stderr)


class SweepOnceTest(BenchToolsTest):
    def test_totals_and_dump_are_what_a_walk_in_python_counts(self):
        self.make_tree("--files", "2500", "--folders", "90", "--fan-out", "4")
        expected = expected_entries(os.fsencode(self.root))
        for readers in ([], ["--readers", "0"], ["--readers", "3"]):
            dump = os.path.join(self.place.name, "dump")
            result = sweep(self.root, "--dump", dump, *readers)
            self.assertEqual(result["fileCount"], 2500)
            self.assertEqual(result["totalFileBytes"], expected[os.fsencode(self.root)])
            self.assertEqual(result["entries"], len(expected))
            self.assertFalse(result["hadReadErrors"])
            self.assertTrue(result["scanComplete"])
            self.assertEqual(result["root"], self.root)
            self.assertEqual(result["rootPath"], self.root)
            self.assertGreater(result["seconds"], 0)
            self.assertGreater(result["peakRssBytes"], 500_000)
            self.assertNotIn("snapshots", result)
            self.assertNotIn("columns", result)
            self.assertEqual(read_dump(dump), expected)

    def test_a_dozen_thousand_files_give_a_snapshot_and_the_final_one(self):
        self.make_tree("--files", "12001", "--folders", "30", "--size", "0")
        result = sweep(self.root, "--snapshots")
        self.assertEqual(len(result["snapshots"]), result["snapshotCount"])
        self.assertIn([12000, 0, False, False], result["snapshots"])
        self.assertEqual(result["snapshots"][-1], [12001, 0, False, True])

    def test_columns_list_folders_by_size_from_the_final_inventory(self):
        self.write(b"small", 10_000)
        self.write(b"big/inside/file", 400_000)
        os.symlink("big", os.path.join(self.root, "link"))
        result = sweep(self.root, "--column", self.root, "--column", os.path.join(self.root, "missing"))
        rows, failure = result["columns"]
        by_name = {row["name"]: row for row in rows}
        self.assertEqual(set(by_name), {"small", "big", "link"})
        self.assertEqual([row["sizeBytes"] for row in rows], sorted((r["sizeBytes"] for r in rows), reverse=True))
        big = os.lstat(os.path.join(self.root, "big/inside/file")).st_blocks * 512
        self.assertEqual(by_name["big"], {"name": "big", "isDirectory": True, "sizeBytes": big,
                                          "sizeIsPartialMinimum": False, "isSymbolicLink": False})
        self.assertTrue(by_name["link"]["isSymbolicLink"])
        self.assertIn("missing", failure["error"])
        self.assertEqual(len(result["columnSeconds"]), 2)

    def test_names_that_are_not_text_stay_valid_json_and_raw_in_the_dump(self):
        names = [b"caf\xe9", b"quote\"back\\slash", b"line\nfeed\ttab", "grün 日本 😀".encode(), b"\xed\xa0\x80",
                 b"\xc0\xaf", b"\xf4\x90\x80\x80", b"cut\xe2\x82", b"delete\x7f"]
        for name in names:
            self.write(name, 1)
        dump = os.path.join(self.place.name, "dump")
        result = sweep(self.root, "--column", self.root, "--dump", dump)
        shown = {row["name"] for row in result["columns"][0]}
        self.assertEqual(shown, {"caf\\xe9", "quote\"back\\slash", "line\nfeed\ttab", "grün 日本 😀",
                                 "\\xed\\xa0\\x80", "\\xc0\\xaf", "\\xf4\\x90\\x80\\x80", "cut\\xe2\\x82",
                                 "delete\x7f"})
        root = os.fsencode(self.root)
        self.assertEqual(set(read_dump(dump)), {root} | {os.path.join(root, name) for name in names})

    def test_a_relative_root_gets_the_working_directory_before_it_and_nothing_else(self):
        self.write(b"sub/file", 1)
        result = sweep("./sub/", cwd=self.root)
        self.assertEqual(result["root"], self.root + "/./sub/")
        self.assertEqual(result["rootPath"], self.root + "/sub")
        self.assertEqual(result["fileCount"], 1)

    def test_an_empty_folder_is_one_final_snapshot(self):
        os.mkdir(self.root)
        result = sweep(self.root, "--snapshots")
        self.assertEqual(result["snapshots"], [[0, 0, False, True]])
        self.assertEqual(result["entries"], 0)

    def test_a_scan_that_fails_exits_1_with_the_text(self):
        done = run(SWEEP_ONCE, os.path.join(self.place.name, "nowhere"))
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout, b"")
        self.assertIn(b"file", done.stderr)

    def test_a_dump_that_cannot_be_written_exits_1(self):
        os.mkdir(self.root)
        done = run(SWEEP_ONCE, self.root, "--dump", os.path.join(self.place.name, "no", "folder"))
        self.assertEqual(done.returncode, 1)
        self.assertEqual(run(SWEEP_ONCE, self.root, "--dump", "/dev/full").returncode, 0)  # nothing to write
        self.write(b"file", 1)
        self.assertEqual(run(SWEEP_ONCE, self.root, "--dump", "/dev/full").returncode, 1)

    def test_bad_usage_exits_2(self):
        for arguments in ([], ["--readers"], [self.root, "--readers", "-1"], [self.root, "--readers", "many"],
                          [self.root, "other"], [self.root, "--what"], [self.root, "--dump"]):
            done = run(SWEEP_ONCE, *arguments)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertEqual(done.stdout, b"")
            self.assertIn(b"usage:", done.stderr)


if __name__ == "__main__":
    unittest.main()
