"""Tests of `modiff report` in a browser: test_report.py MODIFF. Skipped, with status 77, where there is none."""

import functools
import http.server
import os
import pathlib
import signal
import subprocess
import sys
import threading
import time
import unittest

from driver_case import DEBIAN_PATH, MODIFF, DriverCase, limit_files

try:
    from selenium import webdriver
    from selenium.webdriver.common.by import By
except ImportError:
    webdriver = None
CHROMIUM, CHROMEDRIVER = "/usr/bin/chromium", "/usr/bin/chromedriver"
if webdriver is None or not os.path.exists(CHROMIUM) or not os.path.exists(CHROMEDRIVER):
    sys.stderr.write("SKIPPED: the pages are not tested, chromium, chromium-driver or python3-selenium is missing\n")
    sys.exit(77)

# What must not run, load or lead away, wherever it stands. URL stands for a server that notes every request.
ATTACKS = """<script>top.canary = 1; canary = 1</script><script src="URL/script.js"></script>
<img src=x onerror="top.canary = 2"><img src="URL/image.png"><svg onload="top.canary = 3"><image href="URL/svg.png"/></svg>
<meta http-equiv="refresh" content="0;url=URL/refresh"><base href="URL/base/"><base target="_top">
<style>@import url("URL/import.css"); body { background: url(URL/background.png) } mark { background: url(URL/mark.png) }</style>
<link rel="stylesheet" href="URL/style.css"><link rel="preconnect" href="URL"><link rel="prefetch" href="URL/prefetch">
<iframe src="URL/frame"></iframe><iframe srcdoc="<script>top.canary = 4</script>"></iframe><object data="URL/object"></object>
<embed src="URL/embed"><video autoplay src="URL/video"></video><audio autoplay src="URL/audio"></audio>
<a id="leave" href="javascript:top.canary = 5">a</a><form action="URL/form"><input autofocus onfocus="top.canary = 6"></form>
</textarea></title></style></script></iframe></pre></td></table></details>--><script>top.canary = 7</script>
" onmouseover="top.canary = 8" ' autofocus onfocus='top.canary = 9' x="&quot;><script>top.canary = 10</script>
"""
NAME = "a\"b'c<img src=x onerror=top.canary=11>&amp;\u202e\u00e9.html"


class Silent(http.server.BaseHTTPRequestHandler):
    requests = []

    def do_GET(self):
        self.requests.append(self.path)
        self.send_response(204)
        self.end_headers()

    def log_message(self, *_):
        pass


@functools.lru_cache(maxsize=None)
def browser(scripts=True):
    options = webdriver.ChromeOptions()
    options.binary_location = CHROMIUM
    for argument in ("headless=new", "no-sandbox", "disable-gpu", "window-size=1200,900"):
        options.add_argument("--" + argument)
    if not scripts:
        options.add_experimental_option("prefs", {"profile.managed_default_content_settings.javascript": 2})
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    service = webdriver.chrome.service.Service(CHROMEDRIVER)
    driver = webdriver.Chrome(service=service, options=options)
    unittest.addModuleCleanup(driver.quit)
    return driver


class ReportCase(DriverCase):
    def modiff(self, *arguments, status=0, **options):
        return "".join(part.decode() for part in self.run_modiff(*arguments, status=status, env=DEBIAN_PATH, **options))

    def add_usual(self):
        """Three pairs with the same change, one with that and others far from it, one of each other kind."""
        for number in range(3):
            self.add(f"r{number}.html", f"<p>{number}</p>\n<p>Page 1 of 3</p>\n".encode(),
                     f"<p>{number}</p>\n<p>Page 1/3</p>\n".encode(), masters="a/Masters")
        lines = [f"<p>line {number}</p>\n" for number in range(1, 101)]
        lines[79] = "<p>Page 1 of 3</p>\n"
        changed = list(lines)
        changed[9], changed[59] = "<p>line <b>ten</b></p>\n", "<p>line sixty</p>\n"
        changed[79] = "<p>Page 1/3</p>\n"
        self.add("two.html", "".join(lines).encode(), "".join(changed).encode())
        self.add("long.html", b"<p>x</p>\n", b"<p>x</p>\n" + b"".join(b"<p>new %d</p>\n" % n for n in range(900)))
        self.add("gone.html", b"text", None)
        self.add("same.html", b"text", b"text")
        self.add("nul.html", b"a\0b", b"a\0c")
        self.add("known.html", b"1", b"2")
        self.add("new.html", None, b"new")
        self.add("bytes.csv", b"a\0\xff", b"a\0\xfe", output="v5DebugCSV", masters="Masters/CSV")
        (self.cwd / "modiff.toml").write_text('[[expected]]\npair = "**/known.html"\nreason = "TRACK-1"\n')
        self.modiff("run", status=2)

    def report(self, scripts=True, **options):
        self.modiff("report", "--out", "../pages", **options)
        self.pages = self.root / "server/pages"
        self.driver = browser(scripts)
        return self.open(self.pages / "index.html")

    def open(self, page):
        self.driver.get(pathlib.Path(page).as_uri())
        return self.driver

    def open_pair(self, name):
        link = self.driver.find_element(By.CSS_SELECTOR, f'a[href^="pairs/"]:not([hidden])[href*="{self.file_of(name)}"]')
        return self.open(self.pages / link.get_dom_attribute("href"))

    def file_of(self, name):
        return next(path.name for path in (self.pages / "pairs").iterdir() if f"{name}</h1>" in path.read_text())

    def text(self, selector="body"):
        return self.driver.find_element(By.CSS_SELECTOR, selector).text

    def shown_rows(self):
        return [row.find_element(By.TAG_NAME, "th").text.splitlines()[0].split(" ")[0]
                for row in self.driver.find_elements(By.CSS_SELECTOR, "#table tbody tr")]

    def press(self, keys):
        self.driver.switch_to.active_element.send_keys(keys)


class ContentTest(ReportCase):
    def test_without_scripts_all_is_there(self):
        self.add_usual()
        self.report(scripts=False)
        index = self.text()
        for text in ("8 of 10 pairs failed", "Page 1 of 3", "modiff accept --group 1", "v5DebugHTML/new.html", "same.html", "TRACK-1", "change in several groups"):
            self.assertIn(text, index)
        self.assertEqual(len(self.shown_rows()), 10)
        self.assertFalse(self.driver.find_element(By.ID, "filters").is_displayed())
        self.assertEqual(len(list((self.pages / "pairs").iterdir())), 9)
        for name, present in (
                ("two.html", ["Master line 10", "actual line 60", "sixty", "modiff accept 'html:Masters/two.html'"]),
                ("r1.html", ["Accept group 1, all 3 pairs", "Page 1/3"]), ("gone.html", ["modiff retire 'html:Masters/gone.html'"]),
                ("nul.html", ["no verdict", "modiff run"]), ("known.html", ["TRACK-1", "expected"]),
                ("long.html", ["new 10", "342 more rows", "How it looks"]), ("bytes.csv", ["00000000  61 00 ff", "00000000  61 00 fe"])):
            self.open(self.pages / "pairs" / self.file_of(name))
            for text in present:
                self.assertIn(text, self.text(), name)
            self.assertTrue(self.driver.find_element(By.LINK_TEXT, "All pairs").is_displayed())

    def test_structure_for_screen_readers(self):
        self.add_usual()
        self.report()
        for page in (self.pages / "index.html", *(self.pages / "pairs").iterdir()):
            self.open(page)
            faults = self.driver.execute_script("""
                const faults = [], all = selector => Array.from(document.querySelectorAll(selector));
                if (all("main").length !== 1 || all("h1").length !== 1 || !document.title) faults.push("frame");
                if (!document.querySelector(document.querySelector(".skip").getAttribute("href"))) faults.push("skip");
                const policy = document.querySelector("head > meta[http-equiv=Content-Security-Policy]").content;
                if (!/^default-src 'none'; script-src 'sha256-[^*;:]*; style-src ('sha256-[^*;:]*|'unsafe-inline'; img-src data:); base-uri 'none'; form-action 'none'$/.test(policy)) faults.push(policy);
                let last = 1;
                for (const head of all("h1, h2, h3")) { if (head.tagName[1] - last > 1) faults.push(head.textContent); last = +head.tagName[1]; }
                for (const table of all("table")) if (!table.caption && !table.closest("details")) faults.push("caption " + table.className);
                for (const part of all("section, nav")) if (!part.ariaLabel && !document.getElementById(part.getAttribute("aria-labelledby")) && !part.classList.contains("place")) faults.push("name");
                for (const frame of all("iframe")) if (!frame.title || frame.getAttribute("sandbox") !== "") faults.push("frame title");
                const ids = all("[id]").map(element => element.id); if (new Set(ids).size !== ids.length) faults.push("ids");
                return faults""")
            self.assertEqual(faults, [], page)
            self.assertEqual([entry["message"] for entry in self.driver.get_log("browser") if entry["level"] == "SEVERE"], [])


    def test_verdicts(self):
        self.add("same.html", b"1", b"1")
        self.add("known.html", b"1", b"2")
        (self.cwd / "modiff.toml").write_text('[[expected]]\npair = "**/known.html"\nreason = "x"\n')
        for prepare, arguments, status, expected in (
                (None, ["same"], 0, 'good">\n<h1>All 1 pair passed'), (None, [], 0, 'good">\n<h1>2 pairs, none failed'),
                (("new.html", None, b"1"), ["--new", "fail"], 1, 'bad">\n<h1>Failed: there are new files'),
                (("other.html", b"1", b"2"), [], 1, 'bad">\n<h1>1 of 3 pairs failed')):
            if prepare:
                self.add(*prepare)
            self.modiff("run", *arguments, status=status)
            self.modiff("report", "--out", "../pages")
            self.assertIn(f'<header class="verdict {expected}</h1>', (self.root / "server/pages/index.html").read_text())


class HandlingTest(ReportCase):
    def test_filters_and_sorting(self):
        self.add_usual()
        self.report()
        form = self.driver.find_element(By.ID, "filters")
        field = form.find_element(By.NAME, "text")
        self.press("/")
        self.assertEqual(self.driver.switch_to.active_element, field)
        self.press("MASTERS/r")
        self.assertEqual(self.shown_rows(), [f"a/Masters/r{number}.html" for number in range(3)])
        self.assertEqual(form.find_element(By.TAG_NAME, "output").text, "3 of 10")
        form.find_element(By.TAG_NAME, "button").click()
        for name, value, expected in (("outcome", "missing", ["gone"]), ("format", "csv", ["bytes"]),
                                      ("outcome", "passed", ["same"]), ("outcome", "expected", ["known"])):
            form.find_element(By.CSS_SELECTOR, f'[name={name}] option[value="{value}"], [name={name}]').send_keys(value)
            self.assertEqual([pathlib.Path(row).stem for row in self.shown_rows()], expected, value)
            form.find_element(By.TAG_NAME, "button").click()
            self.driver.execute_async_script("setTimeout(arguments[0], 20)")
        self.driver.find_element(By.CSS_SELECTOR, 'a[data-outcome="missing"]').click()
        self.assertEqual(len(self.shown_rows()), 1)
        form.find_element(By.TAG_NAME, "button").click()
        heads = self.driver.find_elements(By.CSS_SELECTOR, "#table thead button")
        heads[1].click()
        rows = self.shown_rows()
        self.assertEqual(rows, sorted(rows, key=str.lower))
        heads[1].click()
        self.assertEqual(self.shown_rows(), rows[::-1])
        self.assertEqual(self.driver.find_element(By.CSS_SELECTOR, "[aria-sort]").get_dom_attribute("aria-sort"), "descending")
        self.assertEqual(len(self.driver.find_elements(By.CSS_SELECTOR, "[role=row] > [role=rowheader] ~ [role=cell]:last-child")), 10)
        heads[3].click()
        self.assertTrue(self.shown_rows()[0].startswith("a/Masters/r"))

    def test_keys(self):
        self.add_usual()
        self.report()
        self.open_pair("two.html")
        pair, here = self.driver.current_url, lambda: self.text(".here h3")
        for key, expected in (("n", "line 10"), ("n", "line 60"), ("n", "line 80"), ("n", "line 80"), ("p", "line 60")):
            self.press(key)
            self.assertIn(expected, here())
            self.assertEqual(self.driver.switch_to.active_element, self.driver.find_element(By.CLASS_NAME, "here"))
        self.press("j")
        following = self.driver.current_url
        self.assertNotEqual(following, pair)
        self.press("k")
        self.assertEqual(self.driver.current_url, pair)
        self.press("u")
        self.assertTrue(self.driver.current_url.endswith("/index.html"))


class AttackTest(ReportCase):
    def test_nothing_of_what_is_compared_runs_or_loads(self):
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Silent)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        attacks = ATTACKS.replace("URL", f"http://127.0.0.1:{server.server_port}")
        for output, masters, name in (("v5DebugHTML", "Masters", NAME), ("v5DebugXHTML", "Masters", NAME[:-5] + ".xml"),
                                      ("v5DebugCSV", "Masters/CSV", "<script>top.canary = 12<\u2215script>.csv"), ("v5DebugMHT", "Masters", "m.mht")):
            head = "Content-Type: text/html\n\n" if name == "m.mht" else ""
            self.add(name, f"{head}<p>1</p>\n{attacks}".encode() + b"\xff", f"{head}<p>{attacks}</p>\n<p>2</p>".encode(), output, masters)
        self.add("<b onclick=x>.html", None, b"new")
        self.add("gone'; touch x; '.html", b"1", None)
        self.modiff("run", status=1)
        self.report()
        self.assertEqual(len(list((self.pages / "pairs").iterdir())), 5)
        for page in (self.pages / "index.html", *(self.pages / "pairs").iterdir()):
            self.open(page)
            self.driver.execute_script("scrollTo(0, document.body.scrollHeight)")
            for frame in self.driver.find_elements(By.TAG_NAME, "iframe"):
                self.driver.switch_to.frame(frame)
                self.assertIn("a", self.text())     # it has rendered
                self.driver.execute_script("for (const link of document.links) link.click()")
                self.driver.switch_to.default_content()
            time.sleep(0.3)
            self.assertEqual(self.driver.current_url, pathlib.Path(page).as_uri())
            self.assertIsNone(self.driver.execute_script("return window.canary"), page)
            strange = self.driver.execute_script(
                "return document.querySelectorAll('body script, body img:not([src^=data]), body style, object, embed, [onclick], [onerror], [onload]').length")
            self.assertEqual(strange, 0, page)
        self.assertEqual(Silent.requests, [])

    def test_names_are_shown_and_commands_hold_them(self):
        self.add(NAME, b"1", b"2")
        self.modiff("run", status=1)
        self.report()
        self.assertIn("\\xe2\\x80\\xae\u00e9.html", self.text())
        self.open(next((self.pages / "pairs").iterdir()))
        command = self.text(".command code")
        subprocess.run(["/bin/sh", "-c", command.replace("modiff ", f"'{MODIFF}' ", 1)], cwd=self.cwd, check=True,
                       env=DEBIAN_PATH, stdout=subprocess.DEVNULL)
        self.assertEqual((self.cwd / "Masters" / NAME).read_bytes(), b"2")


class DirectoryTest(ReportCase):
    def test_what_changed_since_the_run_is_said(self):
        self.add_usual()
        (self.root / "server/webcontent/v5DebugHTML/r0.html").write_bytes(b"newer")
        self.modiff("accept", "r1")
        record = self.cwd / "modiff-run/run.jsonl"
        record.write_bytes(record.read_bytes()[:-20])
        self.report()
        self.assertIn("This is not the whole run", self.text())
        for name, words in (("r0.html", "The actual file has changed since the run"), ("r1.html", "Accepted since the run")):
            self.open(self.pages / "pairs" / self.file_of(name))
            self.assertIn(words, self.text())
            self.assertIn("Page 1 of 3", self.text("table.excerpts"))
            self.assertNotIn("newer", self.text())

    def test_other_files_stay(self):
        self.add_usual()
        self.report()
        pages = self.pages
        first = self.file_of("two.html")
        (pages / "notes.txt").write_text("mine")
        (pages / "pairs/mine.html").write_text("mine")
        (pages / "pairs" / (first + ".AbCdEf")).write_text("half a page")
        with (pages / "modiff-report.txt").open("a") as listing:
            listing.write("notes.txt\n../run/modiff.toml\n")
        self.add("two.html", b"1", b"1")
        self.modiff("run", status=2)
        before = (pages / "index.html").read_bytes()
        self.modiff("report", "--out", pages, status=2, preexec_fn=lambda: limit_files(9000))
        self.assertEqual((pages / "index.html").read_bytes(), before)
        self.assertTrue((pages / "pairs" / first).read_text().endswith("</html>\n"))
        self.report()
        self.assertFalse((pages / "pairs" / first).exists())
        self.assertEqual({path.name for path in pages.rglob("*") if path.is_file() and len(path.stem) < 32},
                         {"index.html", "modiff-report.txt", "notes.txt", "mine.html"})
        self.assertTrue((self.cwd / "modiff.toml").exists())

    def test_directories_that_are_refused(self):
        self.add_usual()
        (self.root / "server/taken").mkdir()
        (self.root / "server/taken/index.html").write_text("mine")
        (self.cwd / "link").symlink_to("Masters")
        for folder in ("linked", "listed"):
            (self.root / folder).mkdir()
        (self.root / "linked/pairs").symlink_to(self.cwd / "Masters")
        (self.root / "listed/modiff-report.txt").write_text("mine")
        for out, message in (("Masters/pages", "among masters"), ("../webcontent", "among masters"), ("link", "among masters"),
                             ("../webcontent/v5DebugHTML/x/y", "among masters"), ("../taken", "no page of an earlier report"),
                             ("../../linked", "among masters"), ("../../listed", "no list of pages"),
                             ("modiff.toml", "modiff.toml"), ("/proc/x", "/proc/x")):
            self.assertIn(message, self.modiff("report", "--out", out, status=2), out)
        self.assertEqual((self.root / "server/taken/index.html").read_text(), "mine")
        self.assertEqual(list(self.cwd.glob("Masters/*.txt")), [])
        self.assertEqual([path.name for path in (self.root / "server/taken").iterdir()], ["index.html"])
        self.assertIn("required", self.modiff("report", status=2))
        self.assertIn("none", self.modiff("report", "--out", "x", "--record", "none", status=2))

    def test_an_interrupted_report_leaves_whole_pages(self):
        for number in range(150):
            self.add(f"r{number}.html", b"<p>1</p>\n" * 200, b"<p>2</p>\n" * 200)
        self.modiff("run", status=1)
        self.report()
        old = (self.pages / "index.html").read_bytes()
        for name, status in ((signal.SIGTERM, 143), (signal.SIGKILL, -9)):
            (self.pages / "index.html").write_bytes(old + b"<!-- older -->")
            with subprocess.Popen([MODIFF, "report", "--out", "../pages"], cwd=self.cwd, stdout=subprocess.DEVNULL, env=DEBIAN_PATH) as child:
                time.sleep(0.1)
                child.send_signal(name)
                self.assertIn(child.wait(), (status, -name, 0))  # also before it listens to signals
            for page in [self.pages / "index.html", *(self.pages / "pairs").glob("*.html")]:
                self.assertRegex(page.read_text(), r"</html>\n(<!-- older -->)?\Z")
        self.report()
        self.assertEqual(len(list((self.pages / "pairs").iterdir())), 150)


if __name__ == "__main__":
    unittest.main()
