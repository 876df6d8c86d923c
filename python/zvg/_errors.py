"""What zvg raises."""

import enum


class Status(enum.IntEnum):
    """Why a call failed; the numbers are those with which the tool zvg ends."""

    INTERNAL = 1
    USAGE = 2
    INPUT_OUTPUT = 3
    DAMAGED = 4
    NOT_FOUND = 5
    CANCELLED = 6


class Error(Exception):
    """What a call of zvg raises.

    status: a Status
    path: the file that the call was about; empty where there is none
    position: the byte in the file at which the first damage was met; None where nobody knows
    """

    def __init__(self, message, status=Status.INTERNAL, path="", position=None):
        super().__init__(message)
        self.status = Status(status)
        self.path = path
        self.position = position

    def __str__(self):
        return self.args[0]  # KeyError would quote it


class DamagedError(Error):
    """The file is damaged or no block file."""


class NotFoundError(Error, KeyError):
    """A GUID or a floor that is not in the file."""


class NoSuchPlaceError(Error, IndexError):
    """A place (floor, position) that is not in the file."""
