"""The parts of tools/mutants: what can be changed, what is chosen, how it is built and tested."""


class Fault(Exception):
    """The changes cannot be tried; the text says why and what to do."""
