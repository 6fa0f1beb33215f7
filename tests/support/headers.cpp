// Nothing: the target that keeps the tests' compiled headers needs a source.
