// Empty: the target that holds the tests' precompiled headers needs a source.
