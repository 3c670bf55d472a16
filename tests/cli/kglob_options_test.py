"""kglob_options_test.py KGLOB [unittest arguments]: tests what kglob's options select and show, and its hints."""

import base64
import datetime
import json
import os
import re
import socket
import time
import unittest

from kglob_case import KGLOB, KglobTest


class Options(KglobTest):
    def setUp(self):
        super().setUp()
        self.add(b"app.js", b"data/a.csv", b"data/b.txt", b"data/sub/c.csv", b"node_modules/x/y.js", b"node_modules/z/")
        os.symlink("data", self.at(b"link"))
        for path, size, age in ((b"data/a.csv", 1500, 30), (b"data/b.txt", 2048, 3 * 86400), (b"data/sub/c.csv", 0, 40 * 86400)):
            os.truncate(self.at(path), size)
            os.utime(self.at(path), (0, time.time() - age))

    def test_selection(self):
        date = datetime.date.fromtimestamp(time.time() - 20 * 86400).isoformat().encode()
        for arguments, output in [
            (["-t", "l", "**"], b"link\n"), (["-td", "--type=l", "*"], b"data\nlink\nnode_modules\n"), (["-tf", "*"], b"app.js\n"),
            (["-L", "link/**/*.csv", "l**/*b/*"], b"link/a.csv\nlink/sub/c.csv\nlink/sub/c.csv\n"),
            (["**/c.csv"], b"data/sub/c.csv\n"), (["-L", "**/c.csv"], b"data/sub/c.csv\nlink/sub/c.csv\n"),
            (["-E", "*_mod*", "-E", "sub", "**"], b"app.js\ndata\ndata/a.csv\ndata/b.txt\nlink\n"),
            (["-E", "data", "data/*.csv", "*/"], b"data/a.csv\nlink/\nnode_modules/\n"),
            (["-E", "[a,b]", "-E", "*.js", "*.js", "d*"], b"data\n"),
            (["--max-depth", "1", "data/**", "*/c.csv", "*/a.csv"], b"data\ndata/a.csv\ndata/b.txt\ndata/sub\n"),
            (["--max-depth=2", "*/a.csv", "**/c.csv"], b"data/a.csv\nlink/a.csv\n"),
            (["-n2", "**"], b"app.js\ndata\n"), (["-n", "2", "a*", "d*", "l*"], b"app.js\ndata\n"), (["-n9", "a*"], b"app.js\n"),
            (["-c", "**/*.csv"], b"2\n"), (["-c", "-u", "data/*", "**/*.csv"], b"4\n"), (["-c", "-n", "1", "**"], b"1\n"),
            (["-u", "a*", "*"], b"app.js\ndata\nlink\nnode_modules\n"), (["-q", "**"], b""),
            (["--size", "+1k", "--size=-1500b", "**"], b"data/a.csv\n"), (["--size", "2ki", "**"], b"data/b.txt\n"),
            (["--size", "-0", "data/**"], b"data/sub/c.csv\n"),
            (["--changed-within", "1min", "-tf", "data/*"], b"data/a.csv\n"),
            (["--changed-before", "1h", "--changed-within", "2weeks 1d", "**"], b"data/b.txt\n"),
            (["--changed-before", date, "**"], b"data/sub/c.csv\n"),
            (["--changed-before", "@%d" % (time.time() - 20 * 86400), "**"], b"data/sub/c.csv\n"),
            (["--changed-before", date + b"T23:59:59+02:00", "**"], b"data/sub/c.csv\n"),
            (["-a", "data/sub/*"], self.at(b"data/sub/c.csv\n")), (["-a", "-r", "data", "*.csv"], self.at(b"data/a.csv\n")),
        ]:
            self.expect(arguments, 0, output)
        self.expect(["-c", "nothing*"], 1, b"0\n")
        self.expect(["-x", "-r", "/", "-q", "proc/*"], 0, b"")
        self.expect(["-x", "-r", "/", "*roc/*"], 1, b"")

    def test_left_out_folders_are_not_read(self):
        for arguments, folders in ((["-E", "node_modules", "**/*.js"], 3), (["--max-depth", "1", "**"], 1), (["**"], 6)):
            self.assertRegex(self.run_kglob("--stats", *arguments)[2], b"read %d folders" % folders, arguments)

    def test_threads(self):
        self.add(*(b"many/%03d/" % number for number in range(300)))
        several = len(os.sched_getaffinity(0)) > 1
        for arguments, has_other_threads in ((["-j1"], False), (["--threads=2"], several), ([], several)):
            threads = self.run_kglob(*arguments, "**/", "/proc/self/task/*")[1].count(b"/task/")
            self.assertEqual(threads > 2, has_other_threads, arguments)

    def test_values_that_cannot_be_understood(self):
        for option, value in [("-t", "x"), ("--size", "10q"), ("--size", "+k"), ("--changed-within", "2 parsecs"), ("--color", "red"),
                              ("--changed-before", "2024-13-01"), ("-n", "0"), ("-n", "-1"), ("--max-depth", "x"), ("-j", "0"), ("--size", "99999999t")]:
            self.expect_error([option, value, "*"], rb"; see kglob --help")

    def test_encoded_forms(self):
        self.add(b"100% \xc3\xa9\xff")
        iri, root = b"file://" + self.folder + b"/100%25%20\xc3\xa9%FF", b"file://" + self.folder
        for arguments, output in [([root + b"/1*"], iri), (["--decode", root + b"/1*"], root + b"/100% \xc3\xa9\xff"),
                                  (["-r", root, "-a", "1*"], iri), (["-r", root, "1*"], b"100% \xc3\xa9\xff"),
                                  (["--decode", "1*"], b"100% \xc3\xa9\xff"),
                                  (["-a", "-r", root, self.folder + b"/1*"], iri)]:
            self.expect(arguments, 0, output + b"\n")

    def test_facts(self):
        self.add(b"data/\xff\"\n\xc3\xa9")
        paths = [b"data/a.csv", b"data/b.txt", b"data/sub", b"link", b"data/\xff\"\n\xc3\xa9"]
        lines = self.run_kglob("--json", "-0", *paths)[1].split(b"\0")[:-1]
        for path, line in zip(paths, map(json.loads, lines), strict=True):
            found, shown = os.lstat(self.at(path)), path.decode(errors="backslashreplace").replace("\\xff", "\\xFF")
            stamp = datetime.datetime.fromisoformat(re.sub(r"(\.\d{6})\d{3}", r"\1", line.pop("mtime")).replace("Z", "+00:00"))
            self.assertAlmostEqual(stamp.timestamp(), found.st_mtime, delta=1e-5)
            self.assertEqual(base64.b64decode(line.pop("path_base64", base64.b64encode(path))), path)
            kind = {0o040000: "folder", 0o100000: "file", 0o120000: "link"}[found.st_mode & 0o170000]
            self.assertEqual(line, {"path": shown, "root": os.fsdecode(self.folder), "kind": kind, "size": found.st_size})
        os.truncate(self.at(b"app.js"), 123456789012)
        clock = {path: time.strftime("%Y-%m-%d %H:%M:%S", time.localtime(os.lstat(self.at(path)).st_mtime)).encode()
                 for path in (b"app.js", b"data/b.txt", b"link")}
        for options, sizes in (["-l"], (b"f 123456789012", b"f         2048", b"l            4")), (["-lh"], (b"f  115G", b"f  2.0K", b"l     4")):
            self.expect([*options, *clock], 0, b"".join(b"%s %s %s\n" % (size, clock[path], path) for size, path in zip(sizes, clock)))

    def test_colours_and_links_on_terminals(self):
        link = b"\x1b]8;;file://%s%s\x1b\\%%s\x1b]8;;\x1b\\" % (socket.gethostname().encode(), self.at(b"app.js"))
        for options, variables, shown in [
            (["link", "data/a.csv"], {"LS_COLORS": "di=1:ln=3;4:*.csv=7"}, b"\x1b[3;4mlink\x1b[0m\n\x1b[1mdata/\x1b[0m\x1b[7ma.csv\x1b[0m\n"),
            (["link", "app.js"], {"LS_COLORS": "x:fi=\x1b[2J"}, b"\x1b[01;36mlink\x1b[0m\napp.js\n"), (["data"], {"NO_COLOR": "1"}, b"data\n"),
            (["--color=never", "data"], {}, b"data\n"), (["--hyperlink", "--color=never", "app.js"], {}, link % b"app.js" + b"\n"),
        ]:
            self.assertEqual(self.on_terminal(*options, **variables), (0, shown, b""), options)
        self.expect(["--hyperlink", "data", "app.js"], 0, b"data\napp.js\n")
        self.expect(["--color=always", "data"], 0, b"\x1b[01;34mdata\x1b[0m\n")

    def test_patterns_from(self):
        with open(self.at(b"list"), "wb") as file:
            file.write(b"d*\n\nlink\nnothing")
        self.expect(["--patterns-from", "list", "a*"], 0, b"app.js\ndata\nlink\n")
        with open(self.at(b"list"), "rb") as file:
            self.expect(["--patterns-from=-"], 0, b"data\nlink\n", stdin=file)
        with open(self.at(b"list"), "wb") as file:
            file.write(b"d*\0a*\0")
        self.expect(["-0", "--patterns-from", "list"], 0, b"data\0app.js\0")
        self.expect_error(["--patterns-from", "list"], b"patterns from list: there is a NUL byte")
        self.expect_error(["--patterns-from", "nowhere"], b"cannot read patterns from nowhere: No such file")
        self.expect_error(["--patterns-from", "data"], b"cannot read patterns from data: Is a directory")


class Hints(KglobTest):
    def test_hints(self):
        self.add(b"data/2024/a.csv", b"{b}/x", b"s3:/c")
        for arguments, hint in [
            (["~/*"], rb'"~" is not expanded'), (["data/{a,b}/*"], rb'"\{\}" only'), (["?.csv"], rb'"\?" only'), (["**/[ab]"], rb'"\[\]" only'),
            ([""], rb"an empty pattern"), (["file:/data/*"], rb'"file:///data/\*"'), (["data/2023/*"], rb"no folder data/2023\n"),
            (["nothing", "data/2024/a.csv/**"], rb"no folder data/2024/a.csv"), (["file://%s/no/x*" % os.fsdecode(self.folder)], rb"no folder file:///.*/no\n"),
        ]:
            status, output, errors = self.run_kglob(*arguments)
            self.assertEqual((status, output), (1, b""), arguments)
            self.assertRegex(errors, rb"\Akglob: [^\n]*" + hint, arguments)
            self.assertEqual(errors.count(b"\n"), 1)
            self.expect(["-q", *arguments], 1, b"")
        for arguments in [["{b}/n*"], ["s3:/*.csv"], ["*/n*"], ["nothing"], ["data/*.csv"], ["d*/{a"]]:
            self.expect(arguments, 1, b"")
        self.expect(["*.csv", "-r", "data", "-r", "data/2024"], 0, b"a.csv\n", b'kglob: several root folders are given; only the last is searched: "data/2024"\n')
        self.expect(["*/c", "data"], 0, b"s3:/c\ndata\n", b'kglob: "data" is taken as a pattern; to search in that folder use -r "data"\n')


if __name__ == "__main__":
    unittest.main(verbosity=2)
