#!/usr/bin/env python3
"""Seeds for the IP-XACT reader fuzzer: the documents of one hierarchy joined
into one input, the top component first, separated by lines "=====".

    make_ipxact_corpus.py FOLDER VENDOR:LIBRARY:NAME:VERSION OUTPUT

FOLDER is searched like the reader does (every *.xml, found by VLNV); only the
documents the top reaches through references are taken."""
import os
import re
import sys

TAG = re.compile(r"<(?:ipxact:)?(vendor|library|name|version)>([^<]*)</(?:ipxact:)?\1>")
REF = re.compile(r'vendor="([^"]*)" library="([^"]*)" name="([^"]*)" version="([^"]*)"')


def vlnv(text):
    found = {}
    for key, value in TAG.findall(text):
        found.setdefault(key, value)
        if len(found) == 4:
            break
    return ":".join(found.get(k, "") for k in ("vendor", "library", "name", "version"))


def main(folder, top, output):
    docs = {}
    for root, _, files in os.walk(folder):
        for f in sorted(files):
            if f.endswith(".xml"):
                text = open(os.path.join(root, f), encoding="utf-8").read()
                docs[vlnv(text)] = text
    order, todo = [], [top]
    while todo:
        key = todo.pop(0)
        if key in order or key not in docs:
            continue
        order.append(key)
        todo += [":".join(r) for r in REF.findall(docs[key])]
    with open(output, "w", encoding="utf-8") as out:
        out.write("\n=====\n".join(docs[k] for k in order))


if __name__ == "__main__":
    main(*sys.argv[1:])
