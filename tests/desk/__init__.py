"""A private desktop for tests of the whole program: screen, real input, recorder, program under test."""
