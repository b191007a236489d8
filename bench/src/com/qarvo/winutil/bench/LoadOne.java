package com.qarvo.winutil.bench;

/** Loads one DLL and prints how many nanoseconds that took. */
final class LoadOne {
    private LoadOne() {
    }

    public static void main(String[] arguments) {
        long begin = System.nanoTime();
        System.load(arguments[0]);
        System.out.println(System.nanoTime() - begin);
    }
}
