"""Routines that are like another one of their file, and say only what differs."""

INHERITED = ("text", "errors", "origin", "related")


def expanded(table):
    """`table` with what each `like` stands for. A `like` that names no fit routine stays, for the checks to find."""
    routines = table.get("routine")
    if not isinstance(routines, list) or not all(isinstance(entry, dict) for entry in routines):
        return table
    models = {str(entry.get("name")): entry for entry in routines if "like" not in entry}
    return table | {"routine": [_expanded(entry, models) for entry in routines]}


def _expanded(entry, models):
    model = models.get(str(entry.get("like")))
    if not model:
        return entry
    taken = {key: model[key] for key in INHERITED if key in model}
    if isinstance(taken.get("related"), list):
        taken["related"] = [name for name in taken["related"] if name != entry.get("name")]
    return taken | {key: value for key, value in entry.items() if key != "like"}
