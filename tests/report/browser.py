"""A real browser without a window, in which pages are looked at and used."""
import base64
import contextlib
import json
import pathlib

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service

# The browser's own errands would stand among the requests of the page.
ARGUMENTS = """--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run
    --disable-background-networking --disable-component-update --disable-sync --hide-scrollbars
    --force-device-scale-factor=1 --disable-dev-shm-usage""".split()


@contextlib.contextmanager
def browser(profile):
    """A browser with a new profile in this folder."""
    options = Options()
    for argument in [*ARGUMENTS, f"--user-data-dir={profile}"]:
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
    try:
        yield Browser(driver)
    finally:
        driver.quit()


class Browser:
    """What tests do with a page."""

    def __init__(self, driver):
        self.driver = driver

    def look(self, width=1366, height=900, dark=False, phone=False, media="screen", forced=False):
        """Sets the size of the window, what the user prefers, and whether there are fingers."""
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 2 if phone else 1,
            "mobile": phone})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "media": media, "features": [
                {"name": "prefers-color-scheme", "value": "dark" if dark else "light"},
                {"name": "forced-colors", "value": "active" if forced else "none"}]})
        self.driver.execute_cdp_cmd("Emulation.setTouchEmulationEnabled", {"enabled": phone})

    def open(self, page):
        """Opens the file; returns when its scripts have run and it has been drawn."""
        self.logs()
        self.driver.get(pathlib.Path(page).resolve().as_uri())
        self.settle()

    def settle(self):
        """Waits until what was changed has been drawn."""
        self.driver.execute_async_script(
            "const done = arguments[0]; setTimeout(() => requestAnimationFrame(() => "
            "requestAnimationFrame(done)), 60);")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def text(self, name):
        return self.run("return document.getElementById(arguments[0]).textContent", name)

    def logs(self):
        """What the console says, and the addresses that were asked for, since the last time. What
        the page's policy refused was not asked for."""
        console = [entry["message"] for entry in self.driver.get_log("browser")]
        requests = {}
        for entry in self.driver.get_log("performance"):
            event = json.loads(entry["message"])["message"]
            number = event["params"].get("requestId")
            if event["method"] == "Network.requestWillBeSent":
                requests[number] = event["params"]["request"]["url"]
            elif event["params"].get("blockedReason") == "csp":
                requests.pop(number, None)
        return console, list(requests.values())

    def picture(self, path, width, height=None):
        """Writes the page, or its upper part, as PNG."""
        height = height or self.run("return document.documentElement.scrollHeight")
        shot = self.driver.execute_cdp_cmd("Page.captureScreenshot", {
            "captureBeyondViewport": True,
            "clip": {"x": 0, "y": 0, "width": width, "height": height, "scale": 1}})
        pathlib.Path(path).write_bytes(base64.b64decode(shot["data"]))
