/* int call_misaligned(void (*target)(), const int *words, int count, int shift)
   Calls target with `count` 32-bit argument words while the stack pointer lies shift bytes (0, 4, 8 or 12) off
   what today's callers guarantee, as callers of the older convention may. */
        .text
        .globl  call_misaligned
        .type   call_misaligned, @function
call_misaligned:
        pushl   %ebp
        movl    %esp, %ebp
        pushl   %esi
        pushl   %edi
        movl    12(%ebp), %esi
        movl    16(%ebp), %ecx
        leal    (, %ecx, 4), %edx
        subl    %edx, %esp
        andl    $-16, %esp
        subl    20(%ebp), %esp
        xorl    %edx, %edx
1:      cmpl    %ecx, %edx
        jge     2f
        movl    (%esi, %edx, 4), %eax
        movl    %eax, (%esp, %edx, 4)
        incl    %edx
        jmp     1b
2:      call    *8(%ebp)
        leal    -8(%ebp), %esp
        popl    %edi
        popl    %esi
        popl    %ebp
        ret
        .size   call_misaligned, .-call_misaligned
        .section .note.GNU-stack, "", @progbits
