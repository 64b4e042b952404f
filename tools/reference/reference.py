#!/usr/bin/env python3
"""What Doxygen itself does not do for the reference. tools/docs calls this.

  filter FILE            a header as Doxygen reads it: each @name group becomes a page of its own below its subsystem
  page FILE              a page of docs/ as Doxygen reads it; that of a subsystem becomes the text above its functions
  formulas FOLDER        formulas of the HTML pages in FOLDER become MathML, which browsers show without help
  check FOLDER NAMES     looks in Doxygen's XML for what each exported function must have
"""
import html
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]


# The folder include/noxcv holds one header a subsystem; what stands beside it belongs to the page "frame".
def subsystem(path):
    return path.stem if path.parent.name == "noxcv" else "frame"


def is_subsystem(path):
    return (ROOT / "include/noxcv" / (path.stem + ".h")).exists()


# ------------------------------------------------------------------------------------------------------------ filter
def filter_header(path):
    """Groups and single declarations are put under their subsystem. Lines keep their numbers."""
    name = subsystem(path)
    text = path.read_text()
    groups = 0

    def comment(match):
        nonlocal groups
        # An initial ends no sentence.
        body = re.sub(r"\b([A-Z])\. ", r"\1.\\ ", match.group(0))
        before = text[: match.start()]
        if "@name" in body:
            groups += 1
            body = body.replace("@name", f"@defgroup {path.stem}_{groups}", 1)
            return re.sub(r"@\{\n \*/$", f"@ingroup {name}\n @{{ */", body)
        if "@file" in body or "@}" in body or before.count("@{") > before.count("@}"):
            return body
        return re.sub(r" ?\*/$", f" @ingroup {name} */", body)

    # Comments that begin a line open a group or describe what follows; those behind a member are left alone.
    print(re.sub(r"^/\*\*.*?\*/", comment, text, flags=re.S | re.M), end="")


# -------------------------------------------------------------------------------------------------------------- page
def markdown(path):
    """A page with its formulas (blocks marked math), and with links to other pages as Doxygen knows them."""
    def link(match):
        text, target = match.groups()
        file = (path.parent / target).resolve()
        if "://" in target or target.startswith("#"):
            return match.group(0)
        return f"[{text}](@ref {file.stem.lower()})" if file.suffix == ".md" else text

    def picture(match):
        name, caption = match.groups()
        return f'@image html {name} "{caption}" width=640px\n' if (ROOT / "build/demo" / name).exists() else ""

    text = path.read_text()
    text = re.sub(r"```math\n(.*?)```", lambda m: "\\f[" + m.group(1).strip() + "\\f]", text, flags=re.S)
    # Pictures are made by the demo, and none is kept: a page names them in comments. Those that are not there are left out.
    text = re.sub(r"<!-- picture: (\S+) (.*?) -->\n?", picture, text)
    return re.sub(r"\[([^\]]*)\]\(([^)\s]*)\)", link, text)


def page(path):
    """The page of a subsystem is a comment that defines its group; any other page has its file's name as its label."""
    title, body = markdown(path).split("\n", 1)
    if not is_subsystem(path):
        print(f"{title} {{#{path.stem.lower()}}}\n{body}")
        return
    header = (ROOT / "include/noxcv" / (path.stem + ".h")).read_text()
    own = re.search(r"@file .*?\n(.*?)\*/", header, re.S).group(1)
    own = re.sub(r"(?m)^ \* ?", "", own)
    body = (own + "\n" + body).replace("*/", "*&zwj;/").replace("/*", "/&zwj;*")
    print(f"/** @defgroup {path.stem} {title.lstrip('# ')}\n{body}\n*/")


# ---------------------------------------------------------------------------------------------------------- formulas
def formulas(folder):
    """Doxygen leaves formulas as TeX between \\( \\) or \\[ \\] for a script in the reader's browser."""
    known = {}

    def mathml(match):
        tex = html.unescape(match.group(2))
        display = ' display="block"' if match.group(1) == "\\[" else ""
        if tex not in known:
            made = subprocess.run(["blahtexml", "--mathml"], input=tex, capture_output=True, text=True).stdout
            found = re.search(r"<markup>\s*(.*?)\s*</markup>", made, re.S)
            if not found:
                sys.exit(f"reference: no formula: {tex}\n{made}")
            known[tex] = found.group(1)
        return f'<math xmlns="http://www.w3.org/1998/Math/MathML"{display}>{known[tex]}</math>'

    for file in sorted(folder.glob("*.html")):
        text = file.read_text()
        text = re.sub(r"<script [^>]*MathJax[^>]*></script>", "", text)
        text = re.sub(r'<script type="text/x-mathjax-config">.*?</script>', "", text, flags=re.S)
        file.write_text(re.sub(r"(\\\(|\\\[)(.*?)(\\\)|\\\])", mathml, text, flags=re.S))
    print(f"reference: {len(known)} formulas")


# ------------------------------------------------------------------------------------------------------------- check
def words(element):
    return " ".join("".join(element.itertext()).split()) if element is not None else ""


# What frame.h tells once for all functions.
SHARED = {"src", "dst", "srcDst", "roi", "mask", "coi", "buffer"}
# Element types as names tell them.
TYPE = "8u|8s|16u|16s|32s|32f|64f"
# An entry must say what its function computes, not where that is told.
POINTER = re.compile(r"^(the same|as (above|before)|likewise|see )", re.I)


def check(folder, names):
    entries, failures = {}, []
    shared_text = ""
    for file in sorted(folder.glob("*.xml")):
        compound = ElementTree.parse(file).getroot().find("compounddef")
        if compound is None:
            continue
        own = words(compound.find("briefdescription")) + " " + words(compound.find("detaileddescription"))
        if compound.get("kind") == "file":
            entries.setdefault("file " + words(compound.find("compoundname")), own)
        if compound.get("kind") != "group":
            continue
        for member in compound.iter("memberdef"):
            if member.get("kind") == "function":
                entries[words(member.find("name"))] = (member, own)
    for name in names:
        if name not in entries:
            failures.append(f"{name} has no entry")
            continue
        member, group = entries[name]
        brief = words(member.find("briefdescription"))
        text = brief + " " + words(member.find("detaileddescription"))
        header = pathlib.Path(member.find("location").get("file")).name
        told = text + " " + group
        if len(brief) < 12 or POINTER.match(brief):
            failures.append(f"{header}: {name} does not say what it computes: {brief!r}")
        if words(member.find("type")) == "NoxStatus":
            statuses = set(re.findall(r"noxSts\w+", told))
            pointers = any("*" in words(p.find("type")) for p in member.findall("param"))
            if not statuses:
                failures.append(f"{header}: {name} tells no status")
            elif pointers and "noxStsNullPointer" not in statuses and "always noxStsNoError" not in told:
                failures.append(f"{header}: {name} does not tell what a null pointer gives")
        for parameter in member.findall("param"):
            parameter = words(parameter.find("declname"))
            if not parameter:
                continue
            image = re.sub(r"\d*Step$", "", parameter)  # the step of an image that is told
            candidates = {parameter, image, image + "s", re.sub(r"\d+$", "", parameter)}
            if candidates & SHARED or re.sub(r"\d+", "", image) in SHARED:
                continue
            text_of_file = entries.get("file " + header, "")
            if not any(re.search(rf"\b{re.escape(c)}\b", told + " " + text_of_file) for c in candidates):
                failures.append(f"{header}: {name} does not tell its parameter {parameter}")
    failures += readme_faults(names)
    for failure in failures:
        print("reference:", failure)
    if failures:
        sys.exit(f"reference: {len(failures)} faults")
    print(f"reference: {len(names)} functions have an entry with parameters and statuses")


def readme_faults(names):
    """README's table of subsystems against the tags in the functions' names: element types and channels."""
    readme = (ROOT / "README.md").read_text()
    for header in sorted((ROOT / "include/noxcv").glob("*.h")):
        text, types, channels = header.read_text(), set(), set()
        for name in names:
            if re.search(rf"\b{name}\(", text):
                for tag in name.split("_"):
                    types |= set(re.findall(TYPE, tag)) if re.fullmatch(f"({TYPE})+", tag) else set()
                    channels |= set(re.findall(r"^C(\d)", tag))
        row = re.search(rf"^\|[^|]*\|([^|]*)\|([^|]*)\| \[{header.stem}\]\(", readme, re.M)
        if types and not row:
            yield f"README's table has no row for {header.name}"
        elif types and set(re.findall(TYPE, row.group(1))) != types:
            yield f"README's table has other element types than {header.name}: {sorted(types)}"
        elif types and set(re.findall(r"\d", row.group(2))) != channels:
            yield f"README's table has other channels than {header.name}: {sorted(channels)}"


if __name__ == "__main__":
    what, first = sys.argv[1], pathlib.Path(sys.argv[2])
    if what == "filter":
        filter_header(first)
    elif what == "page":
        page(first)
    elif what == "formulas":
        formulas(first)
    elif what == "check":
        check(first, pathlib.Path(sys.argv[3]).read_text().split())
    else:
        sys.exit(__doc__)
