#!/usr/bin/env python3
"""`kesto draw` and `kesto report`: the text for Graphviz, the pictures, and the page as a browser without a window sees it.

usage: check_report.py KESTO MODEL CHARTS

CHARTS is OFF when the command was built without the library that draws charts."""

import base64
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import xxhash

KESTO = str(pathlib.Path(sys.argv.pop(1)).resolve())
MODEL = str(pathlib.Path(sys.argv.pop(1)).resolve())
CHARTS = sys.argv.pop(1) != "OFF"
QUIET_BROWSER = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
                 "--disable-component-update --disable-sync --disable-dev-shm-usage --window-size=1240,2000 "
                 "--virtual-time-budget=5000 --enable-logging=stderr --dump-dom").split()
# Counts, once the page has drawn, the points of each canvas that bear colour rather than grey.
PROBE = """setTimeout(() => {
  const coloured = canvas => {
    const data = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height).data;
    let count = 0;
    for (let i = 0; i < data.length; i += 4) {
      const [r, g, b, a] = data.slice(i, i + 4);
      if (a > 128 && Math.max(r, g, b) - Math.min(r, g, b) > 60) ++count;
    }
    return count;
  };
  const charts = {};
  for (const section of document.querySelectorAll("main section")) {
    const canvas = section.querySelector("canvas");
    if (canvas) charts[section.id] = coloured(canvas);
  }
  document.getElementById("probe").textContent = JSON.stringify(charts);
}, 1000);"""


def probed(page):
    """The page with the probe, which its policy allows by its hash."""
    digest = base64.b64encode(hashlib.sha256(PROBE.encode()).digest()).decode()
    return page.replace("script-src ", f"script-src 'sha256-{digest}' ").replace(
        "</body>", f'<pre id="probe"></pre><script>{PROBE}</script></body>')


def kesto(*arguments, **environment):
    return subprocess.run([KESTO, *arguments], capture_output=True, text=True, timeout=120,
                          env={**os.environ, **environment})


def first_leaves(value, path=()):
    """The way to each text, number or truth, of lists to those of the first item."""
    if isinstance(value, dict):
        for key, one in value.items():
            yield from first_leaves(one, path + (key,))
    elif isinstance(value, list):
        if value:
            yield from first_leaves(value[0], path + (0,))
    else:
        yield path


def list_file(file):
    """As if the run had written it so."""
    summary = json.loads((file.parent / "summary.json").read_text())
    content = file.read_bytes()
    row = {"file": file.name, "bytes": len(content), "xxh128": xxhash.xxh3_128_hexdigest(content)}
    summary["files"] = [row if one["file"] == file.name else one for one in summary["files"]]
    (file.parent / "summary.json").write_text(json.dumps(summary))


class Pictures(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def make_report(self, model=MODEL, *options):
        self.assertEqual(kesto("run", model, "-q", "-o", str(self.folder / "out"), *options).returncode, 0)
        made = kesto("report", str(self.folder / "out"), "-o", str(self.folder / "report.html"))
        self.assertEqual(made.returncode, 0)
        if CHARTS:
            self.assertEqual(made.stderr, "")
        else:
            self.assertIn("the page has tables but no charts", made.stderr)
        return (self.folder / "report.html").read_text()

    def browse(self, page):
        path = self.folder / "probed.html"
        path.write_text(page)
        seen = subprocess.run(["chromium", *QUIET_BROWSER, f"--user-data-dir={self.folder / 'profile'}", path.as_uri()],
                              capture_output=True, text=True, timeout=120)
        return seen.stdout, re.findall(r"CONSOLE.*", seen.stderr)

    def test_text_for_graphviz(self):
        path = self.folder / "net.dot"
        self.assertEqual(kesto("draw", MODEL, "-o", str(path)).returncode, 0)
        text = path.read_text()
        self.assertEqual(len(re.findall("^subgraph cluster_", text, re.M)), 3)
        self.assertEqual(len(re.findall(r"^c\d+ \[", text, re.M)), 13)
        arrows = re.findall(r"^c\d+\S* -> .*", text, re.M)
        self.assertEqual(len(arrows), 18)
        # Demands: those of seven appliances, what is asked of the tank, and what the tank lacks.
        self.assertEqual(sum("dashed" in arrow for arrow in arrows), 9)
        self.assertFalse(re.search(r'#[0-9a-f]{3}"', text), "Graphviz takes colours of three digits for black")

    # Three kinds of groups, and junctions of none, in 1,000 groups; then as many groups of which no two are alike.
    def test_large_networks_are_drawn_by_group(self):
        text = "kesto_model = 1\n[simulation]\nstart = 2012-01-01\nend = 2012-01-01\n[brands.b]\nvolume_per_use = 1\n"
        for n in range(1000):
            text += f"[groups.g{n}]\noccupancy = 1\nuses = [1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]\ndemand_fluctuation = 1\n"
        for n in range(1000):
            for i in range(1 + n % 3):
                text += (f'[[components]]\nname = "a{n}.{i}"\ntype = "appliance"\nkind = 1\ngroup = "g{n}"\nbrand = "b"\n'
                         f'[[components]]\nname = "j{n}.{i}"\ntype = "junction"\n'
                         f'[[connections]]\nfrom = "a{n}.{i}:wastewater"\nto = "j{n}.{i}"\n')
        model = self.folder / "large.toml"
        model.write_text(text)
        drawn = kesto("draw", str(model), "-o", str(self.folder / "net.dot"))
        self.assertEqual(drawn.returncode, 0, drawn.stderr)
        self.assertIn("3,998 components are drawn by group; --all draws each", drawn.stderr)
        dot = (self.folder / "net.dot").read_text()
        self.assertEqual(re.findall(r"<b>(.*?)</b>", dot),
                         ["g0 and 333 alike", "g1 and 332 alike", "g2 and 332 alike", "without a group"])
        self.assertIn("1,999 × junction", dot)
        self.assertEqual(re.findall(r'label=" ([\d,]+)"', dot), ["999", "666", "334"])
        self.assertEqual(kesto("draw", str(model), "-o", str(self.folder / "net.svg")).returncode, 0)
        self.assertEqual(kesto("draw", str(model), "--all", "-o", str(self.folder / "all.dot")).returncode, 0)
        self.assertEqual(len(re.findall(r"^c\d+ \[", (self.folder / "all.dot").read_text(), re.M)), 3998)
        model.write_text(re.sub(r'group = "g(\d+)"', lambda g: f'group = "g{int(g[1]) // 3 if int(g[1]) < 300 else g[1]}"',
                                text))
        self.assertEqual(kesto("draw", str(model), "-o", str(self.folder / "net.dot")).returncode, 0)
        self.assertLessEqual(len(re.findall(r"^b\d+ \[", (self.folder / "net.dot").read_text(), re.M)), 40)

    def test_formats(self):
        for ending, begin in ("svg", b"<?xml"), ("png", b"\x89PNG"), ("pdf", b"%PDF"):
            path = self.folder / f"net.{ending}"
            self.assertEqual(kesto("draw", MODEL, "-o", str(path)).returncode, 0)
            self.assertTrue(path.read_bytes().startswith(begin), ending)
        wrong = kesto("draw", MODEL, "-o", str(self.folder / "net.jpeg"))
        self.assertEqual(wrong.returncode, 2)
        self.assertIn("expected a name that ends with", wrong.stderr)

    def test_without_graphviz(self):
        alone = kesto("draw", MODEL, "-o", str(self.folder / "net.svg"), PATH=str(self.folder))
        self.assertEqual(alone.returncode, 1)
        self.assertIn("install graphviz", alone.stderr)
        self.assertIn("-o NAME.dot writes the graph as text", alone.stderr)
        self.assertFalse((self.folder / "net.svg").exists())
        self.assertEqual(kesto("run", MODEL, "-q", "-o", str(self.folder / "out")).returncode, 0)
        page = self.folder / "report.html"
        report = kesto("report", str(self.folder / "out"), "-o", str(page), PATH=str(self.folder))
        self.assertEqual(report.returncode, 0)
        self.assertIn("the network is not drawn: the program \"dot\" of Graphviz was not found", report.stderr)
        self.assertNotIn("NAME.dot", report.stderr)  # that would be a page
        self.assertIn('"network":{"drawing":false', page.read_text())

    def test_folder_without_results(self):
        empty = kesto("report", str(self.folder), "-o", str(self.folder / "report.html"))
        self.assertEqual(empty.returncode, 1)
        self.assertIn("summary.json", empty.stderr)

    def test_a_summary_without_one_of_its_keys(self):
        """The page does without it, or a line says what the file lacks."""
        self.make_report()
        file = self.folder / "out" / "summary.json"
        summary, refused = json.loads(file.read_text()), 0
        for table, rows in summary.items():
            if not isinstance(rows, list) or not rows or not isinstance(rows[0], dict):
                continue
            for key in list(rows[0]):
                kept = rows[0].pop(key)
                file.write_text(json.dumps(summary))
                rows[0][key] = kept
                with self.subTest(table=table, key=key):
                    report = kesto("report", str(self.folder / "out"), "-o", str(self.folder / "report.html"))
                    self.assertIn(report.returncode, (0, 1))
                    if report.returncode == 1:
                        refused += 1
                        self.assertRegex(report.stderr, r"^kesto: error: .*summary\.json.*\n$")
        self.assertGreater(refused, 5)

    def test_files_of_another_shape(self):
        """What is not what it should be is named, with its file; the page never gets it."""
        self.make_report()
        out, page = self.folder / "out", self.folder / "another.html"
        for name in "summary.json", "overview.json":
            good, refused = json.loads((out / name).read_text()), {}
            for path in first_leaves(good):
                changed, holder = json.loads(json.dumps(good)), None
                for step in path:
                    holder, value = (changed, changed[step]) if holder is None else (value, value[step])
                holder[path[-1]] = {"another": []}
                (out / name).write_text(json.dumps(changed))
                if name == "overview.json":
                    list_file(out / name)
                done = kesto("report", str(out), "-o", str(page), PATH=str(self.folder))  # without drawings
                with self.subTest(file=name, path=path):
                    self.assertIn(done.returncode, (0, 1))
                    if done.returncode == 1:
                        errors = [line for line in done.stderr.splitlines() if line.startswith("kesto: error: ")]
                        self.assertEqual(len(errors), 1, done.stderr)
                        self.assertIn(name, errors[0])
                        refused[path] = errors[0]
            (out / name).write_text(json.dumps(good))
            self.assertGreater(len(refused), 30, name)
            if name == "overview.json":
                list_file(out / name)
                self.assertTrue(refused[("paths", "links", 0, "litres")].endswith(
                    'overview.json: it is not what "kesto run" writes: paths.links[0].litres: expected a number, found object'))
                self.assertTrue(refused[("months", "first")].endswith("months.first: expected a month such as 2012-01, found object"))
                self.assertEqual(set(first_leaves(good)) - set(refused), set(), "all of it is shown")
            else:
                self.assertTrue(refused[("start",)].endswith("start: expected a date such as 2012-01-31, found object"))

    def test_a_flow_diagram_between_nodes_that_are_not_there(self):
        self.make_report()
        file = self.folder / "out" / "overview.json"
        overview = json.loads(file.read_text())
        overview["paths"]["links"][0]["to"] = "nowhere"
        file.write_text(json.dumps(overview))
        list_file(file)
        done = kesto("report", str(self.folder / "out"), "-o", str(self.folder / "another.html"))
        self.assertEqual(done.returncode, 1)
        self.assertTrue(done.stderr.endswith('overview.json: it is not what "kesto run" writes: paths: no node has the id "nowhere"\n'))

    def test_page_is_complete_in_itself(self):
        page = self.make_report()
        self.assertEqual("Permission is hereby granted" in page, CHARTS)
        self.assertIn("<svg", page)
        # An arrow's head stands in the page itself.
        self.assertFalse(re.findall(r"<(?:script|img|iframe)[^>]* src=|<link |@import|url\((?!#)|href=.https?:| style=", page))

    @unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
    def test_nothing_else_runs_in_the_page(self):
        page = self.make_report()
        _, console = self.browse(page.replace("</body>", "<script>document.title = 1</script></body>"))
        self.assertEqual(len(console), 1)
        self.assertIn("violates the following Content Security Policy directive", console[0])
        _, console = self.browse(page.replace("<h1>", '<h1 style="color: red" onclick="alert(1)">'))
        self.assertEqual(len(console), 2, console)

    def test_both_formats_make_the_same_page(self):
        town = str(pathlib.Path(MODEL).parent.parent / "town" / "model.toml")
        for model in (MODEL, town):
            with self.subTest(model):
                pages = [self.make_report(model, "--balance", "--format", form) for form in ("csv", "netcdf")]
                self.assertIn("storage_change", pages[0])
                self.assertGreater(len(pages[0]), 10000)
                self.assertTrue(pages[0] == pages[1], "the pages differ")

    @unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
    @unittest.skipIf(CHARTS, "the command has charts")
    def test_tables_stand_without_charts(self):
        dom, console = self.browse(probed(self.make_report()))
        self.assertEqual(console, [])
        # The stripes of stores need no library.
        drawn = json.loads(re.search('<pre id="probe">(.*?)</pre>', dom)[1])
        self.assertEqual(list(drawn), ["stores"])
        self.assertGreater(drawn["stores"], 300)
        self.assertIn("There are no charts", dom)
        self.assertIn("265,559.998373 L", dom)  # rain on the roof, in the account

    @unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
    @unittest.skipUnless(CHARTS, "the command was built without charts")
    def test_charts_are_drawn(self):
        page = self.make_report()
        dom, console = self.browse(probed(page))
        self.assertEqual(console, [])
        charts = json.loads(re.search(r'<pre id="probe">(.*?)</pre>', dom).group(1))
        self.assertIn("series", charts)
        for name, coloured in charts.items():
            self.assertGreater(coloured, 500, name)
        self.assertIn("265,559.998373 L", dom)  # rain on the roof, in the account

    @unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
    def test_names_are_text(self):
        example = shutil.copytree(pathlib.Path(MODEL).parent, self.folder / "example")
        model = example / "model.toml"
        before = model.read_text()
        model.write_text(before.replace("House with a rainwater tank", "</script><!--<script>alert(1)"))
        self.assertNotEqual(before, model.read_text())
        dom, console = self.browse(probed(self.make_report(str(model))))
        self.assertEqual(console, [])
        self.assertIn("&lt;/script&gt;&lt;!--&lt;script&gt;alert(1)", dom)
        self.assertIn('<pre id="probe">{', dom)

    def copied(self):
        """The example, to be changed."""
        return shutil.copytree(pathlib.Path(MODEL).parent, self.folder / "example") / "model.toml"

    def test_what_changed_since_the_run_is_told(self):
        model = self.copied()
        page = self.make_report(str(model))
        self.assertNotIn('"changes":', page)
        results = str(self.folder / "out")
        weather = model.parent / "weather.csv"
        with open(weather, "a") as file:
            file.write("# a comment\n")
        model.write_text(model.read_text() + "\n")
        moved = model.parent.rename(self.folder / "moved") / "model.toml"
        report = kesto("report", results, "-o", str(self.folder / "report.html"), "--model", str(moved))
        self.assertEqual(report.returncode, 0)
        said = [line for line in report.stderr.splitlines() if CHARTS or "tables but no charts" not in line]
        self.assertEqual(said, [f"kesto report: warning: {moved} has changed since the run",
                                f"kesto report: warning: {moved.parent / 'weather.csv'} has changed since the run"])
        self.assertIn("weather.csv has changed since the run", (self.folder / "report.html").read_text())
        (moved.parent / "weather.csv").unlink()
        report = kesto("report", results, "-o", str(self.folder / "report.html"), "--model", str(moved))
        self.assertIn("weather.csv is no longer there", report.stderr)

    @unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
    def test_warnings_stand_in_a_box(self):
        model = self.copied()
        page = self.make_report(str(model))
        self.assertNotIn('<section id="warnings"', self.browse(page)[0])
        text = model.read_text()
        model.write_text('accept = ["unused-brand"]\n' + text + '[brands.idle]\n1 = 2\n[[components]]\nname = "lonely"\n'
                         'type = "junction"\n')
        dom, console = self.browse(self.make_report(str(model)))
        self.assertEqual(console, [])
        box = re.search(r'<section id="warnings".*?</section>', dom, re.S).group(0)
        item = r'<li class="(\w*)"><span class="kind">(\w+)</span> <bdi>'
        self.assertEqual(re.findall(item + r'component "lonely" \(junction\): nothing sends to it', box), [("", "warning")])
        self.assertEqual(re.findall(item + 'brand "idle" is used by no component', box), [("passed", "accepted")])

    @unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
    def test_errors_of_the_page_would_be_seen(self):
        _, console = self.browse("<!doctype html><body><script>nothing.there</script></body>")
        self.assertEqual(len(console), 1)


if __name__ == "__main__":
    unittest.main()
