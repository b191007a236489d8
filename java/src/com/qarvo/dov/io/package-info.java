/** Failures of file input and output that callers handle in their own way. */
package com.qarvo.dov.io;
