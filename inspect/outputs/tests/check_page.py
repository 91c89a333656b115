#!/usr/bin/env python3
"""Checks that timeline pages stand alone: one inline SVG, no script, nothing
fetched from elsewhere, and the title carries what the page is about.

    check_page.py press.html...
"""
import re
import sys
from html.parser import HTMLParser

FETCHING = {"src", "href", "xlink:href", "srcset", "action", "data"}


class page(HTMLParser):
    def __init__(self):
        super().__init__()
        self.tags = []
        self.fetches = []
        self.title = ""
        self.in_title = False
        self.text = []

    def handle_starttag(self, tag, attrs):
        self.tags.append(tag)
        self.in_title = tag == "title" and "svg" not in self.tags[:-1]
        for name, value in attrs:
            if name in FETCHING and value and not value.startswith("#"):
                self.fetches.append(f"{tag} {name}={value}")
            if name == "style" and value and "url(" in value:
                self.fetches.append(f"{tag} style url(")

    def handle_endtag(self, tag):
        self.in_title = False

    def handle_data(self, data):
        if self.in_title:
            self.title += data
        self.text.append(data)


def check(path):
    faults = []
    with open(path, encoding="utf-8") as file:
        html = file.read()
    p = page()
    p.feed(html)
    if not html.startswith("<!DOCTYPE html>"):
        faults.append("no doctype")
    if "script" in p.tags:
        faults.append("a script element")
    if p.tags.count("svg") > 1:
        faults.append("more than one svg")
    if "@import" in html or "@font-face" in html or re.search(r"url\(", html):
        faults.append("the style fetches something")
    faults += [f"fetches: {f}" for f in p.fetches]
    if not p.title.startswith("Button press"):
        faults.append(f"title {p.title!r}")
    if "Failure lines" not in "".join(p.text):
        faults.append("no failure list")
    return [f"{path}: {f}" for f in faults]


if __name__ == "__main__":
    faults = [f for path in sys.argv[1:] for f in check(path)]
    for f in faults:
        print(f)
    sys.exit(1 if faults else 0)
