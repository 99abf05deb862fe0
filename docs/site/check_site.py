#!/usr/bin/env python3
"""Checks the built site: check_site.py [HTML_DIRECTORY [PICTURES_DIRECTORY]]

Every link between its pages leads to a page and an anchor that exist, and no page names a path of the
machine that built it. In headless Chromium, the search finds `split_string` and leads to it, code can
be copied, dark mode can be switched on, and no page scrolls sideways on a phone. With a second
argument, pictures of some pages are left there.
"""
import html.parser
import pathlib
import sys
import urllib.parse

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = ("index", "guide_manual", "guide_strings", "guide_cookbook", "guide_surprises",
         "classtova_1_1types_1_1variant", "namespacetova_1_1strings",
         "classtova_1_1serialization_1_1labeled__serialize__buffer", "directories_8hpp")


class Page(html.parser.HTMLParser):
    """The links and the anchors of one page."""

    def __init__(self, text):
        super().__init__()
        self.links = set()
        self.anchors = set()
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        self.anchors.update(attrs[key] for key in ("id", "name") if attrs.get(key))
        if tag == "a" and attrs.get("href"):
            self.links.add(attrs["href"])


def check_links(site):
    pages = {path.name: Page(path.read_text(encoding="utf-8")) for path in site.glob("*.html")}
    errors = []
    count = 0
    for name, page in sorted(pages.items()):
        for link in sorted(page.links):
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or link.startswith("javascript"):
                continue
            count += 1
            target = urllib.parse.unquote(parts.path) or name
            if target not in pages:
                if not (site / target).exists():
                    errors.append(f"{name}: {link} leads to no page")
            elif parts.fragment and parts.fragment not in pages[target].anchors:
                errors.append(f"{name}: {link} has no such anchor")
    for path in site.glob("*.html"):
        if str(ROOT) in path.read_text(encoding="utf-8"):
            errors.append(f"{path.name} names {ROOT}")
    return errors, f"{count} links between {len(pages)} pages"


def browser():
    options = webdriver.ChromeOptions()
    # Phones lay their scroll bars over the page.
    for flag in ("--hide-scrollbars", "--headless", "--no-sandbox", "--disable-gpu", "--no-first-run", "--disable-sync",
                 "--disable-background-networking", "--disable-component-update", "--disable-quic"):
        options.add_argument(flag)
    return webdriver.Chrome(options=options)


def check_search(driver, site):
    driver.set_window_size(1280, 900)
    driver.get((site / "index.html").as_uri())
    field = driver.find_element(By.ID, "MSearchField")
    field.click()
    field.send_keys("split_string")
    # The results come in a frame of their own.
    wait = WebDriverWait(driver, 20)
    wait.until(lambda d: d.find_element(By.ID, "MSearchResultsWindow").is_displayed())
    frames = driver.find_elements(By.ID, "MSearchResults")
    if frames and frames[0].tag_name == "iframe":
        driver.switch_to.frame(frames[0])
    result = wait.until(lambda d: [element for element in d.find_elements(
        By.CSS_SELECTOR, "[id^='SR_split_5fstring']") if element.is_displayed()])[0]
    # A function with overloads has a link for each of them below its name.
    target = next(link for link in (a.get_attribute("href") for a in result.find_elements(
        By.CSS_SELECTOR, "a")) if link and "#" in link)
    driver.switch_to.default_content()
    driver.get(target)
    anchor = urllib.parse.urlsplit(target).fragment
    title = driver.find_element(By.XPATH, f"//*[@id='{anchor}']/following::h2[1]")
    assert title.text.startswith(("split_string", "◆ split_string")), f"{target} is {title.text}"


def check_pages(driver, site, pictures):
    for width, height, name in ((1280, 900, "desktop"), (390, 844, "phone")):
        # The size of the page itself; a window of that size would lose the height of its frame.
        driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500})
        for page in PAGES:
            driver.get((site / f"{page}.html").as_uri())
            overflow = driver.execute_script(
                "const page = document.getElementById('doc-content');"
                "return page.scrollWidth - page.clientWidth")
            assert overflow <= 0, f"{page} scrolls {overflow} pixels sideways on a {name}"
            if pictures:
                driver.save_screenshot(str(pictures / f"{page}_{name}.png"))

    # The last size was that of a phone.
    for path in sorted(site.glob("*.html")):
        if path.stem.startswith(("guide_", "class", "struct", "namespacetova")) or "_8hpp" in path.stem:
            if path.stem.endswith(("_source", "-members")):
                continue
            driver.get(path.as_uri())
            overflow = driver.execute_script(
                "const page = document.getElementById('doc-content');"
                "return page.scrollWidth - page.clientWidth")
            assert overflow <= 0, f"{path.stem} scrolls {overflow} pixels sideways on a phone"

    driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
    driver.set_window_size(1280, 900)
    driver.get((site / "guide_strings.html").as_uri())
    assert driver.find_elements(By.CSS_SELECTOR, "doxygen-awesome-fragment-copy-button"), \
        "code has no copy button"
    before = driver.execute_script("return getComputedStyle(document.body).backgroundColor")
    driver.find_element(By.CSS_SELECTOR, "doxygen-awesome-dark-mode-toggle").click()
    after = driver.execute_script("return getComputedStyle(document.body).backgroundColor")
    assert before != after, "the button for dark mode does nothing"
    if pictures:
        driver.save_screenshot(str(pictures / "guide_strings_dark.png"))


def main():
    site = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/docs/html").resolve()
    pictures = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else None
    if pictures:
        pictures.mkdir(parents=True, exist_ok=True)
    errors, summary = check_links(site)
    if errors:
        print("\n".join(errors[:40]))
        sys.exit(f"site: {len(errors)} errors")
    driver = browser()
    try:
        check_search(driver, site)
        check_pages(driver, site, pictures)
    finally:
        driver.quit()
    print(f"site: {summary} lead somewhere; search, copying, dark mode and phones work")


if __name__ == "__main__":
    main()
