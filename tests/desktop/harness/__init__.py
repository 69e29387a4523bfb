"""A whole desktop without a screen, on which the real program is watched from outside."""
