"""Measures `modiff report`: how long it takes, how large the pages are, how long a browser takes to open them.

    report.py MODIFF [--pairs N] [--failures N]

Pages of 30 kB, of which half of the failures have the same changed footer. The browser is chromium through selenium,
where they are there; its times include what both need to talk to each other. What it asks for while all pages are
opened is counted."""

import argparse
import json
import pathlib
import subprocess
import sys
import tempfile
import time

from suite import page


def make_tree(root, options):
    run, web = root / "server/run", root / "server/webcontent/v5DebugHTML"
    web.mkdir(parents=True)
    for number in range(options.pairs):
        masters = run / f"reports/area{number % 40:02}/Masters"
        masters.mkdir(parents=True, exist_ok=True)
        name = f"page{number:06}.html"
        footer = f"<p>Page 1 of 3</p>\n<p>Total {number}</p>\n"
        (masters / name).write_text(page(number, 0) + footer)
        if number * options.failures % options.pairs < options.failures:
            footer = footer.replace("1 of 3", "1/3") if number % 2 else footer.replace("Total", "Sum of all")
        (web / name).write_text(page(number, 1) + footer)
    return run


def timed(command, run, status):
    start = time.perf_counter()
    done = subprocess.run(command, cwd=run, stdout=subprocess.DEVNULL, check=False).returncode
    if done != status:
        sys.exit(f"status {done}: {command}")
    return time.perf_counter() - start


def open_in_browser(index):
    from selenium import webdriver
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("headless=new", "no-sandbox", "disable-gpu"):
        options.add_argument("--" + argument)
    options.set_capability("goog:loggingPrefs", {"performance": "ALL"})
    driver = webdriver.Chrome(service=webdriver.chrome.service.Service("/usr/bin/chromedriver"), options=options)

    def wait(script):
        start = time.perf_counter()
        driver.execute_async_script(f"{script}; requestAnimationFrame(() => setTimeout(arguments[arguments.length - 1]))")
        return f"{time.perf_counter() - start:8.2f} s"

    def requests():
        messages = (json.loads(entry["message"])["message"] for entry in driver.get_log("performance"))
        return [message["params"]["request"]["url"] for message in messages
                if message["method"] == "Network.requestWillBeSent"]

    driver.get("about:blank")
    requests()
    start = time.perf_counter()
    driver.get(index.as_uri())
    yield "open index.html", f"{time.perf_counter() - start:8.2f} s"
    field = "const field = document.querySelector('#filters input')"
    for text in ("p", "page", "page0042", ""):
        yield f"filter '{text}'", wait(f"{field}; field.value = '{text}'; field.dispatchEvent(new Event('input', {{bubbles: true}}))")
    yield "sort", wait("document.querySelectorAll('#table thead button')[4].click()")
    yield "scroll to the end", wait("scrollTo(0, document.body.scrollHeight)")
    pairs = [page.as_uri() for page in (index.parent / "pairs").iterdir()]
    asked = requests()
    start = time.perf_counter()
    for number, pair in enumerate(pairs):
        driver.get(pair)
        if number == 0:
            yield "open a pair", f"{time.perf_counter() - start:8.2f} s"
        asked += requests()
    pages = {index.as_uri(), *pairs}
    yield "requests", f"{sum(url in pages for url in asked):8} for pages, {sum(url not in pages for url in asked)} others"
    driver.quit()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("modiff", type=pathlib.Path)
    parser.add_argument("--pairs", type=int, default=10000)
    parser.add_argument("--failures", type=int, default=500)
    options = parser.parse_args()
    modiff = options.modiff.resolve()
    with tempfile.TemporaryDirectory() as directory:
        run = make_tree(pathlib.Path(directory), options)
        timed([modiff, "run"], run, 1)
        print(f"{'modiff report':24}{timed([modiff, 'report', '--out', '../pages'], run, 0):8.2f} s")
        print(f"{'modiff report again':24}{timed([modiff, 'report', '--out', '../pages'], run, 0):8.2f} s")
        pages = run.parent / "pages"
        for name, files in (("index.html", [pages / "index.html"]), ("pairs/", list((pages / "pairs").iterdir()))):
            print(f"{name:24}{sum(file.stat().st_size for file in files) / 1e6:8.2f} MB in {len(files)}")
        for name, figure in open_in_browser(pages / "index.html"):
            print(f"{name:24}{figure}")


if __name__ == "__main__":
    main()
