#!/usr/bin/python3
"""Holds pages of 'datablock report' against an accessibility checker, in light and dark, on a wide screen and a phone.

  axe-test.py AXE.js TOOL SAMPLES
"""

import sys
import tempfile
from pathlib import Path

import browser as chromium

TAGS = ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"]
OPEN_ALL = """for (const toggle of [...document.querySelectorAll('[aria-expanded=false]')].slice(0, 6)) toggle.click();
    for (const details of document.querySelectorAll('details')) details.open = true"""
CHECK = """const done = arguments[1];
    axe.run(document, {runOnly: arguments[0], resultTypes: ['violations']}).then(results => done(results.violations.map(
        one => [one.impact, one.id, one.help, one.nodes.length, one.nodes[0].html.slice(0, 200), one.nodes[0].failureSummary])))"""


def main():
    axe, tool, samples = Path(sys.argv[1]).read_text(), Path(sys.argv[2]).resolve(), Path(sys.argv[3])
    wrong = checked = 0
    with tempfile.TemporaryDirectory() as folder:
        board = (samples / "dac-board.bin").read_bytes()
        damaged = Path(folder) / "damaged.bin"
        damaged.write_bytes(board[:190] + b"x" + board[191:700])
        paths = []
        for i in range(6):
            paths.append(Path(folder) / f"m{i}.bin")
            paths[-1].write_bytes(board[:190] + bytes([i * 40]) + board[191:])
        # Small ones of each form: the checker takes its time.
        pages = {name: [samples / f"{name}.bin"] for name in ("step-attenuator", "second-edition", "iqop6-board")}
        pages |= {"damaged": [damaged], "compared": [samples / "dac-board.bin", "--against", damaged], "family": paths}
        browser = chromium.start()
        browser.set_script_timeout(120)
        try:
            for name, arguments in pages.items():
                page = Path(folder) / f"{name}.html"
                chromium.report(tool, *arguments, "-o", page)
                for theme, width in (("light", 1280), ("dark", 390)):
                    chromium.size(browser, width, 900)
                    chromium.theme(browser, theme)
                    chromium.open_page(browser, page)
                    chromium.draw_all(browser)
                    browser.execute_script("dispatchEvent(new Event('afterprint'))")
                    browser.execute_script(OPEN_ALL)
                    browser.execute_script(axe)
                    checked += 1
                    for impact, rule, text, count, where, why in browser.execute_async_script(CHECK, TAGS):
                        wrong += 1
                        print(f"{name}, {theme}: {impact} {rule}: {text} ({count} times), such as {where}\n    {why}")
        finally:
            browser.quit()
    print(f"axe: {checked} pages, {wrong} findings")
    return 1 if wrong or not checked else 0


if __name__ == "__main__":
    sys.exit(main())
