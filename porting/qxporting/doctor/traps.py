"""Which section of the page qxport-porting(7), docs/porting.md, tells of a kind of finding."""

PAGE = "qxport-porting(7)"
SECTIONS = {
    "missing-module": "Modules and include files of other names",
    "missing-name": "Modules and include files of other names",
    "missing-include": "Modules and include files of other names",
    "does-not-compile": "Sources that the compiler refuses",
    "nobody": "Names that nobody defines",
    "intrinsic": "The compiler's intrinsic is taken without a word",
    "undeclared": "Constants that are declared nowhere",
    "implicit-result": "Functions that are declared nowhere",
    "result-kind": "Functions of another type",
    "argument-count": "More or fewer arguments",
    "argument-kind": "Arguments of another type",
    "literal-kind": "Literals of another kind",
    "integer-width": "Counts and addresses of 8 bytes",
    "comparison-kind": "Comparison functions of INTEGER(2)",
    "handler-value": "Handlers: by value or by reference",
    "default-integer-8": "Default integers of 8 bytes",
    "argument-mismatch": "Sources that the compiler refuses",
    "dollar": "Names with a dollar sign",
}
