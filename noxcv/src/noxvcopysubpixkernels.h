// The float shift for the processor tier that is being compiled; no include guard, see noxveachtier.h.

/// The lanes of `next` one pixel later: the last lane of `before` comes first.
NOX_LANES F32 onePixelLater(F32 before, F32 next) {
#if NOX_LANES_BYTES == 32
    return __builtin_shufflevector(before, next, 7, 8, 9, 10, 11, 12, 13, 14);
#else
    return __builtin_shufflevector(before, next, 3, 4, 5, 6);
#endif
}

/// For rows that fill a vector; the first of each row is left to the caller.
template <class S>
NOX_LANES_TARGET void shiftFloat(Rows<const S> src, Rows<Nox32f> dst, NoxiSize roi, const FloatShift &shift) {
    constexpr int lanes = lanesOf<Nox32f>;
    const F32 upper = splat(shift.upper), lower = splat(shift.lower), ratio = splat(shift.ratio);
    for (int y = 0; y < roi.height; ++y) {
        const S *p = src[y], *q = src[y + 1];
        Nox32f *d = dst[y];
        F32 before{};
        for (int x = 0; x <= roi.width - lanes; x += lanes) {
            const F32 next = floatsOf(p + x + 1) * upper + floatsOf(q + x + 1) * lower;
            const F32 sum = onePixelLater(before, next) * ratio + next;
            __builtin_memcpy(d + x, &sum, sizeof(sum));
            before = next;
        }
        const int x = roi.width - lanes; // the last ones, some of them once more
        const F32 own = floatsOf(p + x) * upper + floatsOf(q + x) * lower,
                  next = floatsOf(p + x + 1) * upper + floatsOf(q + x + 1) * lower;
        const F32 sum = own * ratio + next;
        __builtin_memcpy(d + x, &sum, sizeof(sum));
    }
}
