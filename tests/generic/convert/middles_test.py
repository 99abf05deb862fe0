#!/usr/bin/env python3
"""Proves that the products with powers of ten always decide on which side of a middle a number is.

The reader multiplies 64 bits by the 128 bits of a power of ten and the writer 53 bits. Where the power
is rounded, the product differs from the exact value by less than its last 64 bits. They would not be
enough if the bits between the rounded ones and these were all zeros or all ones: then the reader would
have to go the slow way, and the writer could take the wrong digit. For each power, this script
searches for a factor with such a product, and finds none. The cost is logarithmic, as the search
follows Euclid's algorithm.
"""
import random
import sys
from fractions import Fraction

FIRST, LAST_EXACT, LAST = -342, 55, 308
LAST_POWER_OF_FIVE = 27  # 5^28 does not fit 64 bits


def first_in_range(factor, modulus, low, high):
    """The least x from 0 on with low <= factor * x % modulus <= high, or None."""
    factor %= modulus
    if low == 0:
        return 0
    if factor == 0:
        return None
    if 2 * factor > modulus:
        return first_in_range(modulus - factor, modulus, modulus - high, modulus - low)
    x = -(-low // factor)
    if x * factor <= high:
        return x
    wraps = first_in_range(modulus % factor, factor, -high % factor, -low % factor)
    return None if wraps is None else -(-(low + modulus * wraps) // factor)


def find(factor, start, modulus, low, high, count):
    """An x below `count` with low <= (start + factor * x) % modulus <= high, or None."""
    low, high = (low - start) % modulus, (high - start) % modulus
    x = 0 if low > high else first_in_range(factor, modulus, low, high)
    return x if x is not None and x < count else None


def check_search():
    generator = random.Random(1)
    for _ in range(3000):
        modulus = generator.randrange(2, 200)
        factor, start, low = (generator.randrange(modulus) for _ in range(3))
        high = generator.randrange(low, modulus)
        every = [x for x in range(modulus) if low <= (start + factor * x) % modulus <= high]
        found = find(factor, start, modulus, low, high, modulus)
        assert (found in every) if every else found is None, (factor, start, modulus, low, high)


def power_of_ten(exponent):
    """128 bits, the first of them set: rounded down from 10^0 on, and up below."""
    if exponent >= 0:
        power = 10**exponent
        surplus = power.bit_length() - 128
        return power >> surplus if surplus > 0 else power << -surplus
    divisor = 10**-exponent
    for bits in (127 + divisor.bit_length(), 126 + divisor.bit_length()):
        power = -(-(1 << bits) // divisor)
        if power.bit_length() == 128:
            return power
    raise AssertionError(exponent)


def reader_exceptions():
    """The factors have 64 bits, the first of them set. At least 9 bits follow the rounded ones in the
    upper 64 of 192 bits, and the next 64 matter as well.

    From 10^-27 on no search is needed below 10^0. The fraction of factor * 2^n / 5^-exponent is a
    multiple of 2^-63: unless it is 0, the product is at least 2^74 away from the middle.
    """
    modulus, last_bits, first = 1 << (64 + 64 + 9), 1 << 64, 1 << 63
    for exponent in range(FIRST, LAST + 1):
        if -LAST_POWER_OF_FIVE <= exponent < 0:
            continue
        if exponent > LAST_EXACT:
            low, high = modulus - last_bits, modulus - 1
        else:
            low, high = (1 if exponent >= 0 else 0), last_bits - 1
        power = power_of_ten(exponent)
        x = find(power, power * first, modulus, low, high, first)
        if x is not None:
            yield exponent, first + x


def writer_exceptions():
    """The factors have 53 bits, the first of them set, and 11 zeros after them. Only exact powers
    matter: with any other, the writer reports that it can't tell.
    """
    factors, seen = 1 << 52, set()
    for binary_exponent in range(-1074, 1024):
        # The logarithm to base 10, rounded down, or one more or less.
        for exponent in range((binary_exponent * 78913 >> 18) - 1, (binary_exponent * 78913 >> 18) + 2):
            for precision in range(1, 18):
                power = precision - 1 - exponent
                bits = 126 - binary_exponent - (power * 217706 >> 16)  # of the fraction
                if not 0 <= power <= LAST_EXACT or not 0 < bits <= 128 or (power, bits) in seen:
                    continue
                seen.add((power, bits))
                half, last_bits = 1 << (bits + 63), 1 << 64
                step = power_of_ten(power) << 11
                for low, high in ((half + 1, half + last_bits - 1), (half - last_bits, half - 1)):
                    x = find(step, step * factors, 2 * half, low, high, factors)
                    if x is not None:
                        yield power, bits, factors + x


def main():
    check_search()
    for exponent in range(FIRST, LAST + 1):
        binary = exponent * 217706 >> 16
        assert Fraction(2) ** binary <= Fraction(10) ** exponent < Fraction(2) ** (binary + 1)
    found = [*reader_exceptions(), *writer_exceptions()]
    for one in found:
        print("too close to a middle:", one)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
