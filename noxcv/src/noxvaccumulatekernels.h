// Kernels of the accumulators for the processor tier that is being compiled; no include guard, see noxveachtier.h.

/// The new values of some pixels. Integer terms are exact or rounded once, and 0 under a zero mask byte. Float terms
/// and weighted differences are multiplied by a coefficient instead, so what is not finite shows through the mask.
template <class T, Term term, bool masked>
NOX_LANES F32 accumulated(F32 d, F32 a, F32 b, U8 off, F32 alpha) {
    if constexpr (term == Term::Weighted) {
        return d + (a - d) * clearOff(alpha, off);
    } else {
        const F32 value = term == Term::Source ? a : term == Term::Square ? a * a : a * b;
        if constexpr (!masked)
            return d + value;
        else if constexpr (std::is_same_v<T, Nox32f>)
            return d + value * clearOff(splat(_noxvMaskCoeff[1]), off);
        else
            return d + clearOff(value, off);
    }
}

/// As many pixels as a vector holds. A source may be the accumulator itself: all is read before anything is written.
template <class T, Term term, bool masked>
NOX_LANES void accumulateVector(const T *a, const T *b, const Nox8u *mask, Nox32f *d, F32 alpha) {
    const F32 first = floatsOf(a), second = term == Term::Product ? floatsOf(b) : first;
    const F32 sum =
        accumulated<T, term, masked>(load<F32>(d), first, second, masked ? offLanes<Nox32f>(mask) : U8{}, alpha);
    __builtin_memcpy(d, &sum, sizeof(sum));
}

template <class T, Term term, bool masked>
NOX_LANES void accumulateRow(const T *a, const T *b, const Nox8u *mask, Nox32f *d, int width, F32 alpha) {
    constexpr int lanes = lanesOf<Nox32f>;
    int x = 0;
    for (; x <= width - lanes; x += lanes)
        accumulateVector<T, term, masked>(a + x, b + x, masked ? mask + x : nullptr, d + x, alpha);
    if (x == width)
        return;
    const int rest = width - x;
    Tail<Nox32f> sums(d + x, rest);
    Tail<Nox8u, lanes> on;
    if (masked)
        copyFew<lanes>(on.pixels, mask + x, rest);
    accumulateVector<T, term, masked>(Tail<T, lanes>(a + x, rest).pixels, Tail<T, lanes>(b + x, rest).pixels, on.pixels,
                                      sums.pixels, alpha);
    copyFew<lanes>(d + x, sums.pixels, rest);
}

/// The region, as one long row where no image has a gap between its rows.
template <class T, Term term, bool masked>
NOX_LANES NoxiSize joinedRows(const Accumulation<T> &call) {
    const std::ptrdiff_t width = call.roi.width, source = width * static_cast<int>(sizeof(T));
    const bool packed = call.src1.step == source && (term != Term::Product || call.src2.step == source) &&
                        (!masked || call.mask.step == width) &&
                        call.dst.step == width * static_cast<int>(sizeof(Nox32f)) && area(call.roi) <= INT_MAX;
    return packed ? NoxiSize{call.roi.width * call.roi.height, 1} : call.roi;
}

template <class T, Term term, bool masked>
NOX_LANES_TARGET void accumulate(const Accumulation<T> &call) {
    const NoxiSize size = joinedRows<T, term, masked>(call);
    const F32 alpha = splat(call.alpha);
    for (int y = 0; y < size.height; ++y)
        accumulateRow<T, term, masked>(call.src1[y], call.src2[y], call.mask[y], call.dst[y], size.width, alpha);
}
