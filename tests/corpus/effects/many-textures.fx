texture t0;
texture t1;
texture t2;
texture t3;
texture t4;
texture t5;
texture t6;
texture t7;
texture t8;
texture t9;
texture t10;
texture t11;
texture t12;
texture t13;
texture t14;
texture t15;
texture t16;
texture t17;
texture t18;
texture t19;
fragment { void main() { } }
technique t { }
