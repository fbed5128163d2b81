"""As much of JSON schema as the project's schemas use; what it does not know it refuses."""

import re

_TYPES = {
    "object": lambda v: isinstance(v, dict), "array": lambda v: isinstance(v, list), "string": lambda v: isinstance(v, str),
    "boolean": lambda v: isinstance(v, bool), "null": lambda v: v is None,
    "integer": lambda v: isinstance(v, int) and not isinstance(v, bool),
    "number": lambda v: isinstance(v, (int, float)) and not isinstance(v, bool),
}
_KNOWN = {"$ref", "$schema", "title", "$defs", "type", "enum", "pattern", "properties", "required", "additionalProperties",
          "items", "oneOf", "minimum", "description"}


def problems(value, schema, root=None, place="$"):
    """Where `value` is not as the schema says, a line each."""
    root = root if root is not None else schema
    found = [f"{place}: the checker does not know `{key}`" for key in schema if key not in _KNOWN]
    if "$ref" in schema:
        found += problems(value, root["$defs"][schema["$ref"].removeprefix("#/$defs/")], root, place)
    if "oneOf" in schema and sum(not problems(value, one, root, place) for one in schema["oneOf"]) != 1:
        found.append(f"{place}: {value!r} fits not exactly one of {schema['oneOf']}")
    kinds = schema.get("type", [])
    kinds = [kinds] if isinstance(kinds, str) else kinds
    if kinds and not any(_TYPES[kind](value) for kind in kinds):
        return [*found, f"{place}: {value!r} is no {' or '.join(kinds)}"]
    if "enum" in schema and value not in schema["enum"]:
        found.append(f"{place}: {value!r} is none of {schema['enum']}")
    if "minimum" in schema and value < schema["minimum"]:
        found.append(f"{place}: {value!r} is less than {schema['minimum']}")
    if "pattern" in schema and isinstance(value, str) and not re.search(schema["pattern"], value):
        found.append(f"{place}: {value!r} is not of the form {schema['pattern']}")
    if isinstance(value, dict):
        known = schema.get("properties", {})
        found += [f"{place}: `{key}` is missing" for key in schema.get("required", []) if key not in value]
        for key, one in value.items():
            if key in known:
                found += problems(one, known[key], root, f"{place}.{key}")
            elif schema.get("additionalProperties") is False:
                found.append(f"{place}: unknown key `{key}`")
    if isinstance(value, list) and "items" in schema:
        for number, one in enumerate(value):
            found += problems(one, schema["items"], root, f"{place}[{number}]")
    return found
