"""A headless Chromium for the pages of 'datablock report'. Needs Debian's chromium, chromium-driver, python3-selenium."""

import subprocess
import sys
from pathlib import Path

MISSING = 77  # what a test ends with that cannot be run

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.options import Options
    from selenium.webdriver.chrome.service import Service
except ImportError:
    print("python3-selenium is not installed")
    sys.exit(MISSING)

if not Path("/usr/bin/chromedriver").exists():
    print("chromium-driver is not installed")
    sys.exit(MISSING)


def start():
    options = Options()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
                     "--enable-precise-memory-info", "--force-color-profile=srgb"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def size(browser, width, height, scale=1):
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": width, "height": height, "deviceScaleFactor": scale, "mobile": False})


def theme(browser, name):
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                            {"features": [{"name": "prefers-color-scheme", "value": name}]})


def open_page(browser, path):
    browser.get(Path(path).resolve().as_uri())
    return browser


def report(tool, *arguments):
    """Runs 'datablock report'; its status."""
    return subprocess.run([tool, "report", *map(str, arguments)], stderr=subprocess.PIPE, check=False)


def draw_all(browser):
    """Everything that is otherwise made when it comes into view."""
    browser.execute_script("dispatchEvent(new Event('beforeprint'))")


def wait_for(browser, script, seconds=10):
    """Until the script returns something true, which is the result."""
    from selenium.webdriver.support.ui import WebDriverWait
    return WebDriverWait(browser, seconds, 0.05).until(lambda driver: driver.execute_script(script))
