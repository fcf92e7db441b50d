#!/usr/bin/python3
"""validate_json.py [--lines] SCHEMA FILE: validates FILE with the JSON Schema in SCHEMA.

With --lines every line of FILE is a separate document, and there must be at least one. Each fault is
a line on standard error; the exit status is 0 for a valid file, 1 for an invalid one, 2 for one that
cannot be read.
"""

import argparse
import json
import sys

import jsonschema


def refuse_constant(name):
    raise ValueError(f"{name} is no JSON")


def refuse_twice(members):
    names = [name for name, _ in members]
    twice = {name for name in names if names.count(name) > 1}
    if twice:
        raise ValueError(f"named twice: {', '.join(sorted(twice))}")
    return dict(members)


def parse(text):
    return json.loads(text, parse_constant=refuse_constant, object_pairs_hook=refuse_twice)


def closest(error):
    """The error itself; for alternatives, the errors of the one that matches best."""
    if not error.context:
        return [error]
    alternatives = {}
    for inner in error.context:
        alternatives.setdefault(inner.schema_path[0], []).append(inner)
    # A constant identifies the alternative: when it differs, the other errors do not matter.
    weights = {"const": 10}
    best = min(alternatives.values(),
               key=lambda errors: sum(weights.get(inner.validator, 1) for inner in errors))
    return [leaf for inner in best for leaf in closest(inner)]


def faults(validator, text):
    """The faults of one document."""
    try:
        document = parse(text)
    except ValueError as error:
        return [str(error)]
    found = []
    for error in validator.iter_errors(document):
        for leaf in closest(error):
            place = "/".join(str(step) for step in leaf.absolute_path)
            found.append(f"{place}: {leaf.message}" if place else leaf.message)
    return found


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--lines", action="store_true")
    parser.add_argument("schema")
    parser.add_argument("file")
    arguments = parser.parse_args()
    try:
        with open(arguments.schema, encoding="utf-8") as file:
            schema = parse(file.read())
        with open(arguments.file, encoding="utf-8", newline="") as file:
            content = file.read()
    except (OSError, ValueError) as error:
        print(error, file=sys.stderr)
        return 2
    validator_class = jsonschema.validators.validator_for(schema)
    validator_class.check_schema(schema)
    validator = validator_class(schema)

    documents = {arguments.file: content}
    if arguments.lines:
        lines = content.split("\n")
        if lines[-1] != "":
            print(f"{arguments.file}: its last line has no end", file=sys.stderr)
            return 1
        documents = {f"{arguments.file}:{i}": line for i, line in enumerate(lines[:-1], 1)}
    if not documents:
        print(f"{arguments.file}: it has no line", file=sys.stderr)
        return 1
    valid = True
    for where, text in documents.items():
        for fault in faults(validator, text):
            print(f"{where}: {fault}", file=sys.stderr)
            valid = False
    return 0 if valid else 1


if __name__ == "__main__":
    sys.exit(main())
