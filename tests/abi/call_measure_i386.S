/* int CallAndMeasure(void* function, int count, uint32_t first, uint32_t rest)
 *
 * Calls `function` with `count` 32-bit stack arguments (the first one `first`,
 * the others `rest`) and returns how many bytes of arguments the callee removed
 * from the stack: 0 for a caller-cleans (cdecl) function, 4 * count for a
 * callee-cleans (stdcall) one. The stack pointer is measured right at the call
 * and right after it, before any clean-up of our own. */
        .text
        .globl  CallAndMeasure
        .type   CallAndMeasure, @function
CallAndMeasure:
        pushl   %ebp
        movl    %esp, %ebp
        pushl   %ebx
        pushl   %esi
        pushl   %edi
        movl    %esp, %esi              /* restored at the end, whatever the callee did */
        movl    12(%ebp), %ecx          /* count */
        /* Keep the stack 16-byte aligned at the call, as the i386 ABI wants. */
        andl    $-16, %esp
        leal    0(,%ecx,4), %ebx
        negl    %ebx
        andl    $15, %ebx
        subl    %ebx, %esp
        movl    %ecx, %edi
1:      cmpl    $1, %edi
        jle     2f
        pushl   20(%ebp)                /* rest */
        decl    %edi
        jmp     1b
2:      testl   %ecx, %ecx
        jz      3f
        pushl   16(%ebp)                /* first */
3:      movl    %esp, %edi              /* the stack pointer at the call */
        call    *8(%ebp)
        movl    %esp, %eax
        subl    %edi, %eax
        movl    %esi, %esp
        popl    %edi
        popl    %esi
        popl    %ebx
        popl    %ebp
        ret
        .size   CallAndMeasure, .-CallAndMeasure
        .section .note.GNU-stack,"",@progbits
