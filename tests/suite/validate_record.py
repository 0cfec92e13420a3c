"""Says which lines of a record the schema refuses: validate_record.py SCHEMA RECORD; status 1 when there are some."""

import json
import sys

import jsonschema

with open(sys.argv[1], encoding="utf-8") as file:
    validator = jsonschema.Draft7Validator(json.load(file))
refused = 0
with open(sys.argv[2], encoding="utf-8") as file:
    for number, line in enumerate(file, 1):
        for error in validator.iter_errors(json.loads(line)):
            print(f"{sys.argv[2]}:{number}: {error.message}")
            refused += 1
sys.exit(1 if refused else 0)
