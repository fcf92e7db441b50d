"""Random edits of a product on disk. Each returns the edited file, as findings name it, what was
done, and whether it changes the start though the model stays the same; Untouched when there is
nothing to edit."""

import re

START_TAG = re.compile(r"<([A-Za-z]+)((?:\s+[A-Za-z]+=(?:\"[^\"]*\"|'[^']*'))*)\s*(/?)>")
ATTRIBUTE = re.compile(r"\s+([A-Za-z]+)=(\"[^\"]*\"|'[^']*')")
COMMENT = re.compile(r"<!--.*?-->", re.DOTALL)


class Untouched(Exception):
    """There is nothing to edit."""


def xml_files(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*.xml"))


def read(folder, name):
    return (folder / name).read_bytes().decode("utf-8-sig")


def write(folder, name, text):
    (folder / name).write_bytes(text.encode())


def pick(generator, choices):
    choices = list(choices)
    if not choices:
        raise Untouched
    return generator.choice(choices)


def tags_of(text):
    """The start tags outside comments."""
    hidden = [found.span() for found in COMMENT.finditer(text)]
    return [found for found in START_TAG.finditer(text)
            if not any(begin <= found.start() < end for begin, end in hidden)]


def misspelt(generator, word):
    at = generator.randrange(len(word))
    kind = generator.choice(["drop", "double", "swap", "case"])
    if kind == "drop" and len(word) > 2:
        return word[:at] + word[at + 1:]
    if kind == "swap" and at + 1 < len(word) and word[at] != word[at + 1]:
        return word[:at] + word[at + 1] + word[at] + word[at + 2:]
    if kind == "case" and word[at].isalpha():
        return word[:at] + word[at].swapcase() + word[at + 1:]
    return word[:at] + word[at] + word[at:]


def element_renamed(folder, product, generator, fixtures):
    name = pick(generator, xml_files(folder))
    text = read(folder, name)
    tag = pick(generator, tags_of(text))
    wrong = misspelt(generator, tag[1])
    begin, end = tag.start() + 1, tag.start() + 1 + len(tag[1])
    if not tag[3]:  # its end tag is the one at the same depth
        depth = 0
        for found in re.finditer(rf"<(/?){tag[1]}\b[^>]*?(/?)>", text[tag.start():]):
            depth += -1 if found[1] else 0 if found[2] else 1
            if depth == 0:
                close = tag.start() + found.start() + 2
                text = text[:close] + wrong + text[close + len(tag[1]):]
                break
    write(folder, name, text[:begin] + wrong + text[end:])
    return name, f"<{tag[1]}> is now <{wrong}>", False


def attribute_dropped(folder, product, generator, fixtures):
    name = pick(generator, xml_files(folder))
    text = read(folder, name)
    tag = pick(generator, (tag for tag in tags_of(text) if tag[2]))
    attribute = pick(generator, ATTRIBUTE.finditer(tag[2]))
    begin = tag.start(2) + attribute.start()
    write(folder, name, text[:begin] + text[begin + len(attribute[0]):])
    return name, f"<{tag[1]}> has no {attribute[1]} any more", False


def attribute_renamed(folder, product, generator, fixtures):
    name = pick(generator, xml_files(folder))
    text = read(folder, name)
    tag = pick(generator, (tag for tag in tags_of(text) if tag[2]))
    attribute = pick(generator, ATTRIBUTE.finditer(tag[2]))
    wrong = misspelt(generator, attribute[1])
    begin = tag.start(2) + attribute.start(1)
    write(folder, name, text[:begin] + wrong + text[begin + len(attribute[1]):])
    return name, f"{attribute[1]} of <{tag[1]}> is now {wrong}", False


def file_removed(folder, product, generator, fixtures):
    names = [str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file()]
    name = pick(generator, sorted(names))
    (folder / name).unlink()
    return name, "removed", not name.endswith(".xml")


def edge_added(folder, product, generator, fixtures):
    plugin = pick(generator, product.servers)
    others = [p.id for p in [*product.servers, *product.sub_platforms]]
    other = generator.choice([*others, misspelt(generator, generator.choice(others))])
    name = f"bin/META_INFO/{plugin.id}/{plugin.id}.xml"
    text = read(folder, name)
    added = f'<Plugin ID="{other}"/>'
    if "</DependencyList>" in text:
        text = text.replace("</DependencyList>", added + "</DependencyList>")
    else:
        text = text.replace("</Plugin>", f"<DependencyList>{added}</DependencyList></Plugin>")
    write(folder, name, text)
    return name, f"{plugin.id} depends on {other}", False


def library_spoilt(folder, product, generator, fixtures):
    plugin = pick(generator, [*product.servers, *product.sub_platforms])
    name = f"bin/{plugin.id}.dll"
    library = (folder / name).read_bytes()
    how = generator.choice(["text", "short", "empty", "without_entries", "machine"])
    if how == "without_entries":
        with open(f"{fixtures}/without_entries.dll", "rb") as other:
            library = other.read()
    elif how == "machine":
        library = library[:18] + b"\xb7\x00" + library[20:]
    else:
        library = {"text": b"no library\n", "short": library[:700], "empty": b""}[how]
    (folder / name).write_bytes(library)
    return name, how, True


def value_changed(folder, product, generator, fixtures):
    name = pick(generator, xml_files(folder))
    text = read(folder, name)
    value = pick(generator, (found for found in re.finditer(r"(?:>|=\")([^<>\"\n]+)(?:<|\")", text)
                             if "<?" not in text[max(0, found.start() - 40):found.start()]
                             and found[1].strip()))
    wrong = misspelt(generator, value[1])
    write(folder, name, text[:value.start(1)] + wrong + text[value.end(1):])
    return name, f"{value[1]!r} is now {wrong!r}", False


EDITS = [element_renamed, attribute_dropped, attribute_renamed, file_removed, edge_added,
         library_spoilt, value_changed]
