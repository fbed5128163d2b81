"""What keeps the command from doing what it was asked for."""

REFUSED = 1  # what was asked for cannot be done so
CANNOT = 2  # the command was called wrongly, or the machine does not let it work


class Failure(Exception):
    """Lines for the user, and the status that the command ends with."""

    def __init__(self, lines, status=REFUSED):
        self.lines = [lines] if isinstance(lines, str) else list(lines)
        self.status = status
        super().__init__("\n".join(self.lines))
