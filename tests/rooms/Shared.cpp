// SPDX-License-Identifier: MIT

/// What the check for shared code must find.
inline int shared(int number) {
    return number + 1;
}

int (*const kept)(int) = shared;
int use() {
    return kept(1);
}
