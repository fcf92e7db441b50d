#!/usr/bin/python3
"""refuse_json.py SCHEMA GOOD BAD: whether the JSON Schema in SCHEMA refuses what it should.

GOOD is a valid document. BAD is a list of changes to it, each of which makes it invalid in one way:

    {"put": {"plugins/0/state": "gone"}, "fault": "'gone' is not one of"}

puts a value at each of these places; {"take": "plugins/0/state", ...} takes a member away. The
document must then have exactly one fault, which holds the text of "fault". Each change that is not
refused so is a line on standard error; the exit status is 0 when there is none.
"""

import copy
import json
import sys

import jsonschema

from validate_json import faults, parse


def find(document, place):
    """The object or list that holds the place, and its name or index in there."""
    *way, last = [int(step) if step.isdigit() else step for step in place.split("/")]
    for step in way:
        document = document[step]
    return document, last


def changed(document, change):
    document = copy.deepcopy(document)
    for place, value in change.get("put", {}).items():
        holder, name = find(document, place)
        holder[name] = value
    if "take" in change:
        holder, name = find(document, change["take"])
        del holder[name]
    return document


def main():
    contents = []
    for name in sys.argv[1:]:
        with open(name, encoding="utf-8") as file:
            contents.append(parse(file.read()))
    schema, good, changes = contents
    validator = jsonschema.validators.validator_for(schema)(schema)
    if faults(validator, json.dumps(good)) or not changes:
        print("the good document is not valid, or there is no change", file=sys.stderr)
        return 1
    failed = False
    for change in changes:
        found = faults(validator, json.dumps(changed(good, change)))
        if len(found) != 1 or change["fault"] not in found[0]:
            print(f"{json.dumps(change)}: found {found}", file=sys.stderr)
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
