// The main function of GoogleTest is linked; this program exists for its precompiled headers.
