#!/usr/bin/python3
"""refuse_json.py SCHEMA GOOD BAD: checks that the JSON Schema in SCHEMA refuses wrong documents.

GOOD is a valid document. BAD is a list of changes to it, each of which makes it invalid in one way:

    {"put": {"plugins/0/state": "gone"}, "fault": "'gone' is not one of"}

sets the value at each of these paths; {"take": "plugins/0/state", ...} removes a member. The
document must then have exactly one fault, whose text contains that of "fault". Each change that is
not refused like this is reported on standard error; the exit status is 0 when there is none.
"""

import copy
import json
import sys

import jsonschema

from validate_json import faults, parse


def find(document, place):
    """The object or list that contains the value at `place`, and the value's name or index in it."""
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
