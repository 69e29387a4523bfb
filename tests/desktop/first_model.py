"""first_model.py QUILLBACK: on a machine without any speech model, sets up and chooses the one that fits it,
before the application's window asks for the largest. Without a network it leaves that to the window."""

import os
import sys

from harness.model_choice import STORE, ModelChoice


def main(quillback):
    home = os.path.expanduser("~")
    if os.path.exists(os.path.join(home, STORE)):
        return
    choice = ModelChoice(quillback, home)
    if choice.name:
        choice.use()
    print(f"The speech model is {choice.said}.")


main(*sys.argv[1:])
