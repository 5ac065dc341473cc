"""A private desktop to try the whole program on: screen, real input, recorder, program under test."""
