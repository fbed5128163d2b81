"""The parts of the command `qxport`."""
