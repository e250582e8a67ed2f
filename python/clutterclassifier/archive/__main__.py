"""``python -m clutterclassifier.archive``."""

import sys

from ._command import main

sys.exit(main())
