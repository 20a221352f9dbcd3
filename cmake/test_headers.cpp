// test_headers.cpp - carries the precompiled headers that every test executable reuses; does
// nothing itself.
