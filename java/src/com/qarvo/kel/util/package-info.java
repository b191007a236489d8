/**
 * The native methods for a backup client on Windows, {@link com.qarvo.kel.util.WindowsUtil}, and the classes that they
 * take and give.
 */
package com.qarvo.kel.util;
