#!/usr/bin/env python3
"""Clicks through the pages of tova-xmc in headless Chromium: pages_test.py PROGRAM CATALOGS [PICTURES]

With a third argument, pictures of the pages are left there. Exits with 77 if there is no browser.
"""
import pathlib
import subprocess
import sys
import tempfile

try:
    from selenium import webdriver
    from selenium.common.exceptions import WebDriverException
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
except ImportError:
    print("python3-selenium is not installed")
    sys.exit(77)

PROGRAM, CATALOGS = sys.argv[1:3]
PICTURES = pathlib.Path(sys.argv[3]) if len(sys.argv) > 3 else None


def browser():
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--window-size=1000,900"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))


def page(folder, name, *arguments):
    text = subprocess.run([PROGRAM, *arguments, CATALOGS], capture_output=True, check=True).stdout
    for foreign in (b"http:", b"https:", b"src=", b"<link"):
        assert foreign not in text, f"{name} refers to something outside"
    path = pathlib.Path(folder) / name
    path.write_bytes(text)
    return path.as_uri()


def rows(driver):
    return [[cell.text for cell in row.find_elements(By.TAG_NAME, "td")]
            for row in driver.find_elements(By.CSS_SELECTOR, "#rows tr")]


def locales(driver):
    return [row[1] for row in rows(driver) if len(row) > 1]


def head(driver, key):
    return driver.find_element(By.CSS_SELECTOR, f"th[data-key={key}] button")


def check_coverage(driver, url):
    driver.get(url)
    assert driver.find_element(By.ID, "sum").text == "5 of 5 rows"
    assert locales(driver) == ["de", "de_AT", "en", "de", "en"], locales(driver)
    # The columns have the names and the numbers of the table.
    names = [cell.text for cell in driver.find_elements(By.CSS_SELECTOR, "thead th")]
    assert names == ["Catalog", "Locale", "Own %", "", "Messages", "Not own", "With fallback",
                     "Missing"], names
    assert rows(driver)[0] == ["app", "de", "60.0 %", "", "5", "2", "5", "0"], rows(driver)[0]
    head(driver, "share").click()
    assert locales(driver)[0] == "de_AT"
    head(driver, "share").click()
    assert locales(driver)[-1] == "de_AT"
    assert head(driver, "share").find_element(By.XPATH, "..").get_attribute("aria-sort") == "descending"
    head(driver, "catalog").click()

    # From a row to its missing messages, and back.
    more = driver.find_element(By.CSS_SELECTOR, "#rows button")
    assert more.text == "2"
    more.click()
    keys = [item.text for item in driver.find_elements(By.CSS_SELECTOR, ".keys li")]
    assert keys == ["class", "month.1"], keys
    save(driver, "coverage_open")
    driver.find_element(By.CSS_SELECTOR, "#rows button").click()
    assert not driver.find_elements(By.CSS_SELECTOR, ".keys")

    # A message that is searched for shows who lacks it.
    search = driver.find_element(By.ID, "search")
    search.send_keys("month")
    assert [row[:2] for row in rows(driver) if len(row) > 1] == [["app", "de"], ["app", "de_AT"]]
    assert [item.text for item in driver.find_elements(By.CSS_SELECTOR, ".keys li")] == ["month.1"] * 2
    search.clear()
    search.send_keys("dialog")
    assert driver.find_element(By.ID, "sum").text == "2 of 5 rows"


def check_preview(driver, url):
    driver.get(url)
    sections = driver.find_elements(By.TAG_NAME, "section")
    assert len(sections) == 8, len(sections)
    assert "Hello <who>!" in driver.find_element(By.TAG_NAME, "body").text
    assert "1 234 files, 48.3 GB" in driver.find_element(By.TAG_NAME, "body").text
    assert "not translated; shown in de:\nHallo <who>!" in driver.find_element(By.TAG_NAME, "body").text
    space = driver.execute_script("return getComputedStyle(document.querySelector('bdi')).whiteSpace")
    assert space == "pre-wrap", space
    save(driver, "preview")
    driver.find_element(By.ID, "search").send_keys("januar")
    assert [s.is_displayed() for s in sections].count(True) == 1


def check_narrow(driver, url):
    driver.get(url)
    width = driver.execute_script("return document.documentElement.scrollWidth")
    inner = driver.execute_script("return window.innerWidth")
    assert width <= inner, f"{url} scrolls sideways: {width} of {inner}"


def save(driver, name):
    if PICTURES:
        PICTURES.mkdir(parents=True, exist_ok=True)
        driver.save_screenshot(str(PICTURES / f"{name}.png"))


def main():
    try:
        driver = browser()
    except WebDriverException as error:
        print(f"no browser: {error.msg}")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        coverage = page(folder, "coverage.html", "coverage", "--format", "html")
        preview = page(folder, "preview.html", "preview")
        try:
            check_coverage(driver, coverage)
            check_preview(driver, preview)
            severe = [entry for entry in driver.get_log("browser") if entry["level"] == "SEVERE"]
            assert not severe, severe
            light = driver.execute_script("return getComputedStyle(document.body).backgroundColor")
            driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
                "features": [{"name": "prefers-color-scheme", "value": "dark"}]})
            dark = driver.execute_script("return getComputedStyle(document.body).backgroundColor")
            assert light != dark, light
            driver.get(coverage)
            save(driver, "coverage_dark")
            driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
                "width": 390, "height": 800, "deviceScaleFactor": 1, "mobile": True})
            for name, url in (("coverage", coverage), ("preview", preview)):
                check_narrow(driver, url)
                save(driver, f"{name}_narrow")
        finally:
            driver.quit()
    print("pages: as expected")
    return 0


if __name__ == "__main__":
    sys.exit(main())
