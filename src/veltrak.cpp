#include "main.h"

int main() { return VeltrakMain(); }
