"""Times the benchmark's cases in Python.

Reads a line a case, its size, a tab and "word operand ...", and writes the seconds of a call from texts to text, or "-"
where the language has no such operation.
"""
import math
import sys
import timeit

BINARY = "str(int(a) {} int(b))"
CALLS = {
    **{word: BINARY.format(word) for word in ("+", "-", "*", "%", "**", "&", "|", "^", "<<", ">>")},
    "/": BINARY.format("//"),
    "fmod": BINARY.format("%"),
    "+=": BINARY.format("+"),
    "*=": BINARY.format("*"),
    "==": "'1' if int(a) == int(b) else '0'",
    "<": "'1' if int(a) < int(b) else '0'",
    "max": "str(max(int(a), int(b)))",
    "pow2": "str(1 << int(a))",
    "fact": "str(factorial(int(a)))",
    "sqrt": "str(isqrt(int(a)))",
    "inttobin": "bin(int(a))",
    "bintoint": "str(int(a, 2))",
    "~": "str(~int(a))",
    "div2": "str(int(a) >> 1)",
    "div10": "str(int(a) // 10)",
    "++": "str(int(a) + 1)",
}
ROUNDS = 3
ROUND_SECONDS = 0.005


def seconds_per_call(statement, operands):
    names = {"a": operands[0], "b": operands[-1]}
    names.update(factorial=math.factorial, isqrt=math.isqrt)
    timer = timeit.Timer(statement, globals=names)
    calls = 1
    while timer.timeit(calls) < ROUND_SECONDS:
        calls *= 2
    return min(timer.repeat(ROUNDS, calls)) / calls


def main():
    if hasattr(sys, "set_int_max_str_digits"):
        sys.set_int_max_str_digits(0)
    for line in sys.stdin:
        word, *operands = line.partition("\t")[2].split()
        statement = CALLS.get(word)
        print(f"{seconds_per_call(statement, operands):.4g}" if statement else "-")


main()
